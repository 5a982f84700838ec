// SPDX-License-Identifier: MIT
// The television: the content of its screen, and the position in the stream.
import { byId, clockText, make, setChildren, setIcon, setText } from "./dom.js";
import { run } from "./link.js";
import { state, watch } from "./store.js";

/** When the simulator reported the position, on the page's clock. */
let toldAt = 0;
let isDragging = false;
let pictureAt = 0; // when the last picture was drawn, on the page's clock

export function positionNow() {
  const passed = state.Paused || !state.Running || state.SourceState !== "playing" ? 0
    : (performance.now() - toldAt) / 1000 * state.Speed;
  const position = (state.Position ?? 0) + passed;
  return state.Duration > 0 ? Math.min(position, state.Duration) : position;
}

/** The name of an application, or the word "control". */
const mutedByText = name => name === "control" ? "the simulator's controls" : name;

/** The reason why the screen shows no picture: an icon, a title and a line. */
export function coverOf({ Running, ProgrammeLocked, ServiceLocked, LockStopsPushes, VideoMuted, VideoMutedBy, SourceState,
  Replay, Input }) {
  if (!Running) {
    return ["off", "The service is dead", "Restart it, or wait until it returns."];
  }
  if (Replay && !Input) {
    return ["tv", "A recording is replayed", "It has no picture. Applications get the recorded answers and packets."];
  }
  if (ProgrammeLocked || ServiceLocked) {
    return ["lock", ProgrammeLocked ? "Programme locked" : "Service locked",
      `You or an application can unlock it. ${LockStopsPushes ? "Until then no packets and captions are sent."
        : "Packets and captions are still sent."}`];
  }
  if (VideoMuted) {
    return ["dark", "Picture muted", `by ${mutedByText(VideoMutedBy)}`];
  }
  if (SourceState === "starting" || SourceState === "error") {
    return ["wait", SourceState === "error" ? "The input has failed" : "Waiting for the input", ""];
  }
  return null;
}

function showCover() {
  const cover = coverOf(state);
  byId("cover").hidden = cover === null;
  byId("screen").dataset.cover = cover?.[0] ?? "none";
  if (cover) {
    byId("cover-icon").setAttribute("href", `icon.svg#${cover[0]}`);
    setText(byId("cover-text"), cover[1]);
    setText(byId("cover-note"), cover[2]);
  }
}

function showBadges() {
  const badges = [
    state.AudioMuted && `Sound muted by ${mutedByText(state.AudioMutedBy)}`,
    state.Paused && "Paused",
    state.Speed !== 1 && `${state.Speed}×`,
    state.SourceState === "ended" && "Ended",
  ].filter(Boolean);
  setChildren(byId("badges"), ...badges.map(text => make("li", {}, text)));
}

function showPosition() {
  const position = positionNow();
  setText(byId("elapsed"), clockText(position));
  if (!isDragging) {
    byId("position").value = position;
  }
}

/** Shows the position together with a picture: the browser then draws the page once for both. */
export function notePicture() {
  pictureAt = performance.now();
  showPosition();
}

export function startTelevision() {
  watch(["Position", "Paused", "Speed", "SourceState", "Running"], () => {
    toldAt = performance.now();
    showPosition();
  });
  watch(["Running", "ProgrammeLocked", "ServiceLocked", "LockStopsPushes", "VideoMuted", "VideoMutedBy", "SourceState",
    "Replay", "Input"], showCover);
  watch(["AudioMuted", "AudioMutedBy", "Paused", "Speed", "SourceState"], showBadges);
  watch(["Duration", "Replay"], () => {
    byId("position").max = state.Duration;
    byId("position").disabled = state.Duration <= 0 || Boolean(state.Replay);
    setText(byId("duration"), state.Duration > 0 ? clockText(state.Duration) : state.Input ? "live" : "");
  });
  watch(["Paused"], () => {
    const play = byId("play");
    play.setAttribute("aria-label", state.Paused ? "Play" : "Pause");
    setIcon(play, state.Paused ? "play" : "pause");
  });
  watch(["Speed"], () => {
    const speed = byId("speed");
    if (![...speed.options].some(option => Number(option.value) === state.Speed)) {
      speed.append(make("option", { value: state.Speed }, `${state.Speed}×`));
    }
    speed.value = String(state.Speed);
  });
  byId("play").onclick = () => run(state.Paused ? "play" : "pause");
  byId("speed").onchange = async event => {
    if (!await run("speed", event.target.value)) {
      event.target.value = String(state.Speed);
    }
  };
  const position = byId("position");
  position.oninput = () => {
    isDragging = true;
    setText(byId("elapsed"), clockText(Number(position.value)));
  };
  position.onchange = async () => {
    await run("seek", Number(position.value).toFixed(3));
    isDragging = false;
  };
  setInterval(() => {
    if (performance.now() > pictureAt + 200) {
      showPosition();
    }
  }, 100);
}
