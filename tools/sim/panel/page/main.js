// SPDX-License-Identifier: MIT
// Starts all parts of the page.
import { byId, setText } from "./dom.js";
import { listen, showError } from "./link.js";
import { update, watch } from "./store.js";
import { startTelevision } from "./television.js";
import { startPicture } from "./picture.js";
import { startCaptions } from "./captions.js";
import { beginAgain, startConversation, take } from "./conversation.js";
import { startProgramme } from "./programme.js";
import { startControls } from "./controls.js";
import { startFaults } from "./faults.js";
import { startApplications } from "./applications.js";
import { startRecorder } from "./recorder.js";

let isConnected = false;
let refusal = ""; // the reason if the simulator refuses this page

function showService(state) {
  const pill = byId("service");
  const word = !isConnected ? refusal ? "refused" : "no simulator" : !state.Running ? "service is dead"
    : state.Responding ? "running" : "service does not answer";
  pill.className = `pill ${word === "running" ? "good" : "bad"}`;
  setText(pill, word);
}

function showInput(state) {
  const [, name] = state.Programmes.find(([number]) => number === state.Programme) ?? [0, ""];
  setText(byId("channel"), name || (state.Programme ? `Programme ${state.Programme}` : "Television"));
  setText(byId("input"), [state.Input, state.Replay && `replays ${state.Replay}`].filter(Boolean).join(" · "));
  document.title = `${byId("channel").textContent} – Television`;
}

const known = {};
watch(["Running", "Responding"], showService);
watch(["Programmes", "Programme", "Input", "Replay"], showInput);
startTelevision();
startPicture();
startCaptions();
startProgramme();
startControls();
startFaults();
startApplications();
startConversation();
startRecorder();
listen("api/events", text => {
  const news = JSON.parse(text);
  Object.assign(known, news.state);
  update(news.state);
  take(news.messages, news.missed);
}, (nowConnected, why) => {
  beginAgain();
  if (why && why !== refusal) {
    showError(why);
  }
  isConnected = nowConnected;
  refusal = why;
  showService(known);
  document.body.classList.toggle("lost", !isConnected);
});
