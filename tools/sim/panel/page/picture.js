// SPDX-License-Identifier: MIT
// The picture and the sound, which are decoded only while the page shows and plays them.
import { byId, setIcon, setText } from "./dom.js";
import { listen } from "./link.js";
import { drawTestCard } from "./testcard.js";
import { state, watch } from "./store.js";
import { coverOf, notePicture } from "./television.js";

let endPicture = null;
let frames = 0; // number of drawn pictures
let hasPicture = false;

const install = "To see the picture, install ffmpeg: sudo apt install ffmpeg";

async function draw(blob) {
  const image = await createImageBitmap(blob);
  const canvas = byId("picture");
  if (canvas.width !== image.width || canvas.height !== image.height) {
    canvas.width = image.width;
    canvas.height = image.height;
  }
  canvas.getContext("2d").drawImage(image, 0, 0);
  image.close();
  canvas.dataset.frames = ++frames;
  notePicture();
  if (!hasPicture) {
    hasPicture = true;
    showState();
  }
}

/** Requests no picture while it is covered by a lock or a mute, or is not visible. */
function follow() {
  const isWanted = !document.hidden && state.Running !== undefined && coverOf(state) === null;
  if (isWanted && !endPicture) {
    endPicture = listen("api/picture", draw);
  } else if (!isWanted && endPicture) {
    endPicture();
    endPicture = null;
  }
}

/** Removes the picture of the previous programme. */
function forget() {
  const canvas = byId("picture");
  canvas.getContext("2d").clearRect(0, 0, canvas.width, canvas.height);
  hasPicture = false;
  showState();
}

/** The line below the picture that reports what is missing. */
function noteOf({ PanelPicture: picture, Paused, Running, Responding }) {
  if (Running && Responding === false) {
    return "The service does not answer: the page shows its last state.";
  }
  switch (picture?.state) {
    case "no ffmpeg":
      return install;
    case "failed":
      return "ffmpeg ended without a picture: it cannot decode this stream. It restarts automatically.";
    case "stalled":
      return "No picture has arrived for 2 seconds: ffmpeg does not answer, or the stream contains no pictures. ffmpeg restarts after 5 seconds.";
    case "nothing":
      return "The programme has no video.";
    case "waiting":
      return hasPicture ? "" : Paused ? "Paused: the picture appears when the stream plays." : "Waiting for the next complete picture.";
    default:
      return "";
  }
}

function showState() {
  const now = state.PanelPicture?.state;
  if (now === "no ffmpeg" || now === "nothing" || now === "failed") {
    drawTestCard(byId("picture"), now === "no ffmpeg" ? "no ffmpeg" : now === "failed" ? "no decoder" : "no video");
    hasPicture = false;
  }
  setText(byId("picture-note"), noteOf(state));
}

const rate = 48000;
const startDelay = 0.15; // seconds of sound in the buffer

/** Plays samples without gaps. */
class Speaker {
  constructor() {
    this.context = new AudioContext({ sampleRate: rate });
    this.gain = this.context.createGain();
    this.gain.connect(this.context.destination);
    this.next = 0;
    this.isStopped = false;
    this.end = listen("api/sound", blob => this.play(blob));
  }

  async play(blob) {
    const samples = new Int16Array(await blob.arrayBuffer());
    if (this.isStopped) {
      return;
    }
    const buffer = this.context.createBuffer(2, samples.length / 2, rate);
    for (const channel of [0, 1]) {
      const data = buffer.getChannelData(channel);
      for (let i = 0; i < data.length; ++i) {
        data[i] = samples[2 * i + channel] / 32768;
      }
    }
    const source = new AudioBufferSourceNode(this.context, { buffer });
    source.connect(this.gain);
    const now = this.context.currentTime;
    if (this.next < now || this.next > now + 1) {
      this.next = now + startDelay;
    }
    source.start(this.next);
    this.next += buffer.duration;
    byId("sound").dataset.seconds = (Number(byId("sound").dataset.seconds ?? 0) + buffer.duration).toFixed(3);
  }

  mute(isMuted) {
    this.gain.gain.value = isMuted ? 0 : 1;
  }

  stop() {
    this.isStopped = true;
    this.end();
    this.context.close();
  }
}

let speaker = null;

function followSound() {
  speaker?.mute(state.AudioMuted || state.ProgrammeLocked || state.ServiceLocked || !state.Running);
}

function toggleSound() {
  if (speaker) {
    speaker.stop();
    speaker = null;
  } else {
    speaker = new Speaker();
    followSound();
  }
  byId("sound").setAttribute("aria-pressed", String(speaker !== null));
  setIcon(byId("sound"), speaker ? "sound" : "silent");
}

export function startPicture() {
  watch(["Running", "ProgrammeLocked", "ServiceLocked", "VideoMuted", "SourceState", "Replay", "Input"], follow);
  document.addEventListener("visibilitychange", follow);
  watch(["PanelPicture", "Paused", "Running", "Responding"], showState);
  watch(["Input", "Programme"], forget);
  watch(["AudioMuted", "ProgrammeLocked", "ServiceLocked", "Running"], followSound);
  byId("sound").onclick = toggleSound;
}
