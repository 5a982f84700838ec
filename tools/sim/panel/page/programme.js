// SPDX-License-Identifier: MIT
// The programmes of the guide, the clock, the format, and the tracks.
import { byId, hexText, make, setChildren, setText } from "./dom.js";
import { run } from "./link.js";
import { state, watch } from "./store.js";

let guideTimeAt = 0;

function showClock() {
  if (state.GuideTime === undefined) {
    return;
  }
  const passed = state.Paused ? 0 : (performance.now() - guideTimeAt) / 1000 * state.Speed;
  const time = new Date((state.GuideTime + passed) * 1000);
  setText(byId("clock"), time.toLocaleString("en-GB", { dateStyle: "medium", timeStyle: "medium", timeZone: "UTC" }));
}

function hours(programme) {
  const text = seconds => new Date(seconds * 1000).toISOString().slice(11, 16);
  return `${text(programme.start)} – ${text(programme.start + programme.duration)}`;
}

function showEvent(element, label, programme) {
  setChildren(element,
    make("p", { class: "label" }, label, programme.title ? make("span", {}, hours(programme)) : null),
    make("h3", {}, programme.title ?? "nothing in the guide",
      programme.minimumAge ? make("span", { class: "age", title: "minimum age" }, `${programme.minimumAge}+`) : null),
    programme.subtitle ? make("p", { class: "subtitle" }, programme.subtitle) : null,
    programme.description ? make("p", { class: "text" }, programme.description) : null);
}

function resolutionText({ width, height, frameRateNumerator, frameRateDenominator, interlaced }) {
  if (!width) {
    return "not known yet";
  }
  const rate = frameRateNumerator && frameRateDenominator
    ? `, ${Number((frameRateNumerator / frameRateDenominator).toFixed(2))}/s` : "";
  return `${width}×${height}${interlaced ? "i" : "p"}${rate}`;
}

/** The lists of tracks: the property, its title, the property with the selected one, and the text of a track. `kind` is the
 *  word of the verb that selects one, if there is such a verb. */
const lists = [
  ["AudioTracks", "Sound", "Audio", track => [track.language || "–", track.coding,
    track.channels ? `${track.channels} ch` : "", hexText(track.pid)], "audio"],
  ["Subtitles", "Subtitles", "Subtitle", track => [track.language || "–", track.kind, `page ${track.page}`,
    track.hardOfHearing ? "hard of hearing" : "", hexText(track.pid)], "subtitle"],
  ["TeletextPages", "Teletext", "Teletext", track => [track.language || "–", `page ${track.page}`,
    track.subtitles ? "subtitles" : "", hexText(track.pid)]],
  ["Captions", "Captions", "Caption", track => [track.language || "–", `tag ${hexText(track.componentTag, 2)}`,
    hexText(track.pid)]],
  ["SuperimposedTexts", "Superimposed texts", "Superimpose", track => [track.language || "–",
    `tag ${hexText(track.componentTag, 2)}`, hexText(track.pid)]],
];

function trackItem(texts, isSelected, kind, index) {
  const words = make("span", {}, make("b", {}, texts[0]), ` ${texts.slice(1).filter(Boolean).join(" · ")}`);
  const common = { class: isSelected ? "track-item selected" : "track-item", "aria-current": isSelected && "true" };
  return make("li", {}, kind && !state.Replay
    ? make("button", { ...common, type: "button", "data-key": `${kind} ${index}`, "data-kind": kind, "data-index": index }, words)
    : make("div", common, words));
}

function showTracks() {
  const shown = lists.filter(([property]) => state[property]?.length);
  setChildren(byId("track-lists"), ...(shown.length === 0 ? [make("p", { class: "quiet" }, "none")] :
    shown.map(([property, title, selected, words, kind]) => make("div", { class: "track-list" },
      make("h3", {}, title),
      make("ul", { class: "plain" }, ...state[property].map((track, index) =>
        trackItem(words(track), index === state[selected], kind, index)))))));
}

export function startProgramme() {
  watch(["GuideTime", "Paused", "Speed"], () => {
    guideTimeAt = performance.now();
    showClock();
  });
  setInterval(showClock, 500);
  watch(["Resolution"], () => setText(byId("resolution"), resolutionText(state.Resolution)));
  watch(["Present"], () => showEvent(byId("present"), "Now", state.Present));
  watch(["Following"], () => showEvent(byId("following"), "Next", state.Following));
  watch([...lists.flatMap(([property, , selected]) => [property, selected]), "Replay"], showTracks);
  byId("track-lists").onclick = event => {
    const button = event.target.closest("button[data-kind]");
    if (button) {
      run("select", button.dataset.kind, button.dataset.index);
    }
  };
}
