// SPDX-License-Identifier: MIT
// The messages between applications and the service as a sequence diagram: a column for each application, a row for
// each message. The document contains only the visible rows.
import { byId, make, setChildren, setText } from "./dom.js";
import { showDetails } from "./details.js";
import { describe, isFailure } from "./messages.js";
import { state, update, watch } from "./store.js";

export const mostMessages = 10000;
const rowHeight = 26;
const lanesWidth = 0.55; // share of the width of the diagram
const roomForTitle = 180; // pixels

const messages = [];
const applications = new Map(); // known applications by bus name
let shown = []; // the messages that pass the filters
let arrived = 0; // messages during a pause
let place = 0; // number of messages that the connection has passed
let known = 0; // number of messages that all connections have passed
let isPaused = false;
let selected = null; // the selected message
let isDrawPlanned = false;
let followsEnd = true;
let drawnHeight = 0;

const filter = { application: "", text: "", pushes: true, failures: false };

function passes(message) {
  return (filter.application === "" || message.application === filter.application) &&
    (filter.pushes || !message.pushes) && (!filter.failures || isFailure(message)) &&
    (filter.text === "" || `${message.function} ${message.endpoint} ${message.kind}`.toLowerCase().includes(filter.text));
}

function filterAll() {
  shown = messages.filter(passes);
  planDraw();
}

/** The connection is a new one: the simulator sends its messages again, from the first that it has. */
export function beginAgain() {
  place = 0;
}

/** Adds messages of the simulator, unless they are known; `missed` is the number of earlier messages that it discarded. */
export function take(news, missed) {
  place += missed;
  const lost = place - known;
  place += news.length;
  known = Math.max(known, place);
  news = news.slice(Math.max(-lost, 0));
  if (lost > 0) {
    news = [{ number: 0, kind: "gap", time: news[0]?.time ?? 0, missed: lost, values: "" }, ...news];
  }
  messages.push(...news);
  const areNew = news.filter(note).length > 0;
  if (messages.length > mostMessages) {
    messages.splice(0, messages.length - mostMessages);
  }
  if (forgetApplications() || areNew) {
    showApplications();
    update({ PanelApplications: applications });
  }
  if (isPaused) {
    arrived += news.length;
    showPaused();
  } else if (news.length > 0) {
    shown.push(...news.filter(passes));
    const surplus = shown.findIndex(message => message.number >= messages[0].number);
    if (surplus > 0) {
      shown.splice(0, surplus);
      byId("diagram").scrollTop -= followsEnd ? 0 : surplus * rowHeight;
    }
    planDraw();
  }
}

/** Stores the participants of a message. Returns whether something about them is new. */
function note({ application, name, program, process }) {
  const former = applications.get(application);
  if (!application || (former && (!name || former.name === name) && (!program || former.program === program))) {
    return false;
  }
  applications.set(application, { name: name || former?.name, program: program || former?.program, process });
  return true;
}

/** Forgets the applications that have left and have no message any more. Returns whether there were any. */
function forgetApplications() {
  if (messages.length < mostMessages) {
    return false;
  }
  const used = new Set([filter.application, ...messages.map(message => message.application),
    ...(state.Applications ?? []).map(one => one.name)]);
  return [...applications.keys()].filter(name => !used.has(name) && applications.delete(name)).length > 0;
}

/** The name in a narrow column: "viewer" of an application that has named itself "org.example.viewer". */
const shortTitleOf = busName => applications.get(busName)?.name?.split(".").pop() || busName;

/** The name of an application: the one that it has set, otherwise that of its program. */
export function titleOf(busName) {
  const { name, program } = applications.get(busName) ?? {};
  return name || (program ? `${program.split("/").pop()} ${busName}` : busName);
}

/** The title with the bus name, which distinguishes applications of the same name. */
const fullTitleOf = busName => titleOf(busName).endsWith(busName) ? titleOf(busName) : `${titleOf(busName)} ${busName}`;

/** Changes only what differs: there may be thousands of applications, and new ones with every message. */
function showApplications() {
  const list = byId("filter-application");
  const former = new Map([...list.options].slice(1).map(option => [option.value, option]));
  for (const name of applications.keys()) {
    setText(former.get(name) ?? list.appendChild(make("option", { value: name })), fullTitleOf(name));
    former.delete(name);
  }
  former.forEach(option => option.remove());
}

/** The visible applications and the positions of their columns, in pixels. The service has the first column. */
function columnsOf(rows, width) {
  const names = [...new Set(rows.map(row => row.application).filter(Boolean))];
  const first = width < 560 ? 66 : 96;
  const last = width - (width < 560 ? 30 : 70);
  const step = names.length > 1 ? (last - first) * lanesWidth / (names.length - 1) : 0;
  return { service: first, step, of: new Map(names.map((name, index) => [name, last - (names.length - 1 - index) * step])) };
}

function planDraw() {
  if (!isDrawPlanned) {
    isDrawPlanned = true;
    requestAnimationFrame(draw);
  }
}

const pool = []; // rows of the document, which are reused

function rowElement(index) {
  while (pool.length <= index) {
    const row = make("div", { class: "message", role: "option" },
      make("span", { class: "when" }), make("span", { class: "arrow" }), make("span", { class: "says" }));
    pool.push(row);
    byId("rows").append(row);
  }
  return pool[index];
}

function placeRow(row, message, top, columns) {
  const { time, text, className } = describe(message, titleOf(message.application));
  const from = columns.service;
  const to = columns.of.get(message.application) ?? columns.service + 60;
  row.className = `message ${className}${message === selected ? " selected" : ""}`;
  row.id = `message-${message.number}`;
  row.setAttribute("aria-selected", String(message === selected));
  row.style.transform = `translateY(${top}px)`;
  const [when, arrow, says] = row.children;
  setText(when, time);
  setText(says, text);
  says.title = text;
  arrow.style.left = `${from}px`;
  arrow.style.width = `${to - from}px`;
  arrow.className = `arrow ${message.fromService ? "right" : "left"}`;
  says.style.left = `${from + 12}px`;
}

function draw() {
  isDrawPlanned = false;
  const diagram = byId("diagram");
  drawnHeight = shown.length * rowHeight;
  byId("rows").style.height = `${drawnHeight}px`;
  if (followsEnd && !isPaused) {
    diagram.scrollTop = drawnHeight;
  }
  const first = Math.max(0, Math.floor(diagram.scrollTop / rowHeight) - 2);
  const rows = shown.slice(first, first + Math.ceil(diagram.clientHeight / rowHeight) + 4);
  const columns = columnsOf(rows, diagram.clientWidth);
  rows.forEach((message, index) => placeRow(rowElement(index), message, (first + index) * rowHeight, columns));
  pool.forEach((row, index) => { row.hidden = index >= rows.length; });
  drawColumns(columns);
  byId("empty").hidden = shown.length > 0;
  diagram.dataset.count = messages.length;
}

function drawColumns({ service, step, of }) {
  const isNarrow = step > 0 && step < roomForTitle;
  const heads = [["", "service", service], ...[...of].map(([name, x]) => [name, titleOf(name), x])];
  setChildren(byId("lanes"), ...heads.map(([name, title, x]) =>
    make("span", { class: name ? "lane" : "lane service", style: `left:${x}px`, title }, make("b",
      name && step > 0 ? { style: `max-width:${step - 8}px` } : {}, isNarrow && name ? shortTitleOf(name) : title))));
}

function showPaused() {
  byId("hold").setAttribute("aria-pressed", String(isPaused));
  setText(byId("hold"), isPaused ? (arrived ? `Paused, ${arrived} new` : "Paused") : "Pause");
}

function select(message) {
  selected = message;
  byId("diagram").setAttribute("aria-activedescendant", message ? `message-${message.number}` : "");
  planDraw();
  showDetails(byId("details"), message);
}

/** Moves the selection and scrolls to it. */
function step(by) {
  if (shown.length === 0) {
    return;
  }
  const at = shown.indexOf(selected);
  const next = Math.min(Math.max(at < 0 ? shown.length - 1 : at + by, 0), shown.length - 1);
  const diagram = byId("diagram");
  followsEnd = false;
  diagram.scrollTop = Math.min(Math.max(diagram.scrollTop, (next + 1) * rowHeight - diagram.clientHeight + 30), next * rowHeight);
  select(shown[next]);
}

function onKey(event) {
  const steps = { ArrowDown: 1, ArrowUp: -1, PageDown: 12, PageUp: -12, Home: -mostMessages, End: mostMessages };
  if (event.key in steps) {
    event.preventDefault();
    step(steps[event.key]);
  } else if (event.key === "Escape") {
    select(null);
  }
}

export function startConversation() {
  const diagram = byId("diagram");
  diagram.onscroll = () => {
    followsEnd = diagram.scrollTop + diagram.clientHeight >= drawnHeight - rowHeight;
    planDraw();
  };
  diagram.onkeydown = onKey;
  diagram.onclick = event => {
    const row = event.target.closest(".message");
    if (row) {
      select(shown.find(message => `message-${message.number}` === row.id) ?? null);
    }
  };
  byId("filter-application").onchange = event => {
    filter.application = event.target.value;
    filterAll();
  };
  byId("filter-text").oninput = event => {
    filter.text = event.target.value.trim().toLowerCase();
    filterAll();
  };
  for (const name of ["pushes", "failures"]) {
    byId(`filter-${name}`).onchange = event => {
      filter[name] = event.target.checked;
      filterAll();
    };
  }
  byId("hold").onclick = () => {
    isPaused = !isPaused;
    arrived = 0;
    showPaused();
    if (!isPaused) {
      filterAll();
    }
  };
  byId("empty-log").onclick = () => {
    messages.length = 0;
    select(null);
    filterAll();
  };
  new ResizeObserver(planDraw).observe(diagram);
  watch(["PanelConversation"], state => {
    byId("conversation-error").hidden = !state.PanelConversation;
    setText(byId("conversation-error"), state.PanelConversation);
  });
  planDraw();
}
