// SPDX-License-Identifier: MIT
// The applications that use the television.
import { byId, make, setChildren, setText } from "./dom.js";
import { titleOf } from "./conversation.js";
import { state, watch } from "./store.js";

const endpointNames = {
  PLAYERCONTROL: "player control", BROADCASTDATA: "broadcast data", IPTVDATASUBSCRIBER: "data subscriber",
  IPGUTIL: "programme guide",
};

function counter(name, value, isBad = false) {
  return make("div", isBad ? { class: "bad" } : {}, make("dt", {}, name), make("dd", {}, value.toLocaleString("en")));
}

function item(application) {
  const subscriber = state.Subscribers.find(one => one.application === application.name);
  const wants = subscriber ? [subscriber.pes && "PES packets", subscriber.captions && "captions"].filter(Boolean) : [];
  return make("li", { class: "application" },
    make("h3", {}, application.id || titleOf(application.name),
      application.id ? make("span", { class: "quiet" }, ` ${application.name}`) : null),
    make("p", { class: "chips" }, ...application.endpoints.map(type =>
      make("span", { class: "chip" }, endpointNames[type] ?? type.toLowerCase()))),
    make("p", { class: "quiet" }, wants.length ? `subscribed to ${wants.join(" and ")}` : "no subscription"),
    subscriber ? make("dl", { class: "counters" }, counter("sent", subscriber.sent),
      counter("queued", subscriber.queued), counter("dropped", subscriber.dropped, subscriber.dropped > 0)) : null);
}

export function startApplications() {
  watch(["Applications", "Subscribers", "PanelApplications"], () => setChildren(byId("application-list"),
    ...(state.Applications.length === 0 ? [make("li", { class: "quiet" }, "none connected")]
      : state.Applications.map(item))));
  watch(["Sent", "Dropped"], () => setText(byId("totals"),
    `${state.Sent.toLocaleString("en")} notification${state.Sent === 1 ? "" : "s"} sent, ${state.Dropped.toLocaleString("en")} dropped`));
}
