// SPDX-License-Identifier: MIT
// The test card, which the television shows without a picture.

const bars = ["#c0c0c0", "#c0c000", "#00c0c0", "#00c000", "#c000c0", "#c00000", "#0000c0"];

export function drawTestCard(canvas, text) {
  canvas.width = 640;
  canvas.height = 360;
  const { width, height } = canvas;
  const context = canvas.getContext("2d");
  bars.forEach((colour, index) => {
    context.fillStyle = colour;
    context.fillRect(Math.floor(index * width / bars.length), 0, Math.ceil(width / bars.length), height * 0.72);
  });
  const steps = 11;
  for (let step = 0; step < steps; ++step) {
    const level = Math.round(step * 255 / (steps - 1));
    context.fillStyle = `rgb(${level} ${level} ${level})`;
    context.fillRect(Math.floor(step * width / steps), height * 0.72, Math.ceil(width / steps), height * 0.28);
  }
  context.fillStyle = "#000c";
  context.fillRect(width / 2 - 90, height * 0.36 - 24, 180, 48);
  context.fillStyle = "#fff";
  context.font = "600 22px system-ui, sans-serif";
  context.textAlign = "center";
  context.textBaseline = "middle";
  context.fillText(text, width / 2, height * 0.36);
}
