// SPDX-License-Identifier: MIT
// Draws ISDB captions and superimposed texts over the picture.
import { byId } from "./dom.js";
import { CaptionDecoder } from "./arib.js";
import { watch } from "./store.js";

/** The drawing of one property with statements. */
class Text {
  constructor(property) {
    this.decoder = new CaptionDecoder();
    this.number = -1; // number of the last decoded statement
    this.running = null;
    watch([property], state => this.take(state[property]));
  }

  take({ number, statements }) {
    const first = number - statements.length; // number of the statement before these
    if (first > this.number || number < this.number) {
      this.finish();
      this.decoder = new CaptionDecoder();
      this.number = first;
    }
    for (const statement of statements.slice(this.number - first)) {
      this.finish();
      this.running = this.decoder.run(Uint8Array.from(atob(statement), character => character.charCodeAt(0)));
    }
    this.number = number;
    this.goOn();
  }

  /** Ends the wait of the next statement for this one. */
  finish() {
    clearTimeout(this.timer);
    while (this.running && !this.running.next().done);
    this.running = null;
  }

  goOn() {
    const step = this.running?.next() ?? { done: true };
    if (step.done) {
      this.running = null;
    } else {
      this.timer = setTimeout(() => this.goOn(), step.value * 1000);
    }
    draw();
  }
}

let texts = [];

function drawPattern(context, { pattern, foreground }, x, y, width, height) {
  const bitmap = new OffscreenCanvas(pattern.width, pattern.height);
  const inner = bitmap.getContext("2d");
  const most = 2 ** pattern.bits - 1;
  for (let i = 0; i < pattern.width * pattern.height; ++i) {
    let value = 0;
    for (let bit = i * pattern.bits; bit < (i + 1) * pattern.bits; ++bit) {
      value = value << 1 | pattern.data[bit >> 3] >> (7 - (bit & 7)) & 1;
    }
    inner.globalAlpha = value / most;
    inner.fillStyle = foreground;
    inner.fillRect(i % pattern.width, Math.floor(i / pattern.width), 1, 1);
  }
  context.drawImage(bitmap, x, y, width, height);
}

function drawGlyph(context, glyph) {
  const { cell, size, char, foreground, background } = glyph;
  if (background) {
    context.fillStyle = background;
    context.fillRect(cell.x, cell.y, cell.width, cell.height);
  }
  if (!foreground) {
    return;
  }
  const x = cell.x + (cell.width - size.width) / 2;
  const y = cell.y + (cell.height - size.height) / 2;
  if (glyph.pattern) {
    drawPattern(context, glyph, x, y, size.width, size.height);
    return;
  }
  context.font = `${size.height}px sans-serif`;
  context.textAlign = "center";
  context.textBaseline = "middle";
  context.lineJoin = "round";
  context.lineWidth = size.height / 8;
  context.strokeStyle = "#000";
  const at = [x + size.width / 2, y + size.height / 2, size.width];
  if (!background) {
    context.strokeText(char, ...at);
  }
  context.fillStyle = foreground;
  context.fillText(char, ...at);
}

/** Makes the plane cover the picture, whose pixels are square. */
function draw() {
  const canvas = byId("captions");
  const picture = byId("picture");
  canvas.width = 960;
  canvas.height = Math.round(960 * picture.height / picture.width);
  const context = canvas.getContext("2d");
  for (const { decoder } of texts) {
    context.setTransform(canvas.width / decoder.width, 0, 0, canvas.height / decoder.height, 0, 0);
    decoder.glyphs.forEach(glyph => drawGlyph(context, glyph));
  }
  canvas.setAttribute("aria-label", texts.map(({ decoder }) => decoder.string.trim()).filter(Boolean).join(" "));
}

export function startCaptions() {
  texts = ["PanelCaption", "PanelSuperimpose"].map(property => new Text(property));
  new MutationObserver(draw).observe(byId("picture"), { attributeFilter: ["width", "height"] });
}
