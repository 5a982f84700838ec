// SPDX-License-Identifier: MIT
// The list of faults, and the form that adds one.
import { byId, make, setChildren } from "./dom.js";
import { run } from "./link.js";
import { state, watch } from "./store.js";

/** The word of each fault, its effect, and its value if it has one. */
const kinds = [
  ["error", "answer with an error"], ["drop", "do not send"], ["delay", "delay", "milliseconds"],
  ["result", "change the result", "result"], ["missing", "omit a key", "key"],
  ["garbage", "replace a value by letters", "key"], ["short", "cut a value in half", "key"], ["empty", "return no endpoint"],
  ["dead", "return a dead endpoint"], ["duplicate", "send twice"], ["reorder", "swap with the next"],
  ["burst", "hold, then send together", "times the rate"],
];

function faultItem(fault) {
  const limits = [
    fault.count !== undefined ? `${fault.count} left` : "",
    fault.until !== undefined ? `until ${new Date(fault.until * 1000).toISOString().slice(11, 19)}` : "",
  ].filter(Boolean).join(", ");
  return make("li", { class: "fault" }, make("code", {}, fault.fault), make("span", { class: "quiet" }, limits),
    make("button", { type: "button", class: "small", "data-key": fault.fault, "data-fault": fault.fault,
      "aria-label": `Remove ${fault.fault}` }, "Remove"));
}

async function offerMessages() {
  const protocol = await (await fetch("api/protocol.json")).json();
  const names = protocol.endpoints.flatMap(endpoint => endpoint.functions.map(one => one.name));
  setChildren(byId("messages"), ...["*", "PESCB", "CaptionCB", "Announcement", ...new Set(names)].map(name =>
    make("option", { value: name })));
}

function words() {
  const kind = byId("fault-kind").value;
  const value = kinds.find(([word]) => word === kind)[2] ? `:${byId("fault-value").value}` : "";
  const option = (name, field) => byId(field).value === "" ? [] : [name, byId(field).value];
  return ["fault", "add", `${byId("fault-message").value}=${kind}${value}`,
    ...option("--count", "fault-count"), ...option("--for", "fault-for")];
}

export function startFaults() {
  const kind = byId("fault-kind");
  kind.append(...kinds.map(([word, effect]) => make("option", { value: word }, `${word} – ${effect}`)));
  kind.onchange = () => {
    const value = kinds.find(([word]) => word === kind.value)[2];
    byId("fault-value-label").hidden = !value;
    byId("fault-value").required = Boolean(value);
    byId("fault-value-label").firstElementChild.textContent = value ?? "";
  };
  kind.onchange();
  byId("fault-form").onsubmit = event => {
    event.preventDefault();
    run(...words());
  };
  byId("fault-list").onclick = event => {
    const button = event.target.closest("[data-fault]");
    if (button) {
      run("fault", "remove", button.dataset.fault);
    }
  };
  watch(["Faults"], () => setChildren(byId("fault-list"), ...(state.Faults.length === 0
    ? [make("li", { class: "quiet" }, "none")] : state.Faults.map(faultItem))));
  offerMessages();
}
