// SPDX-License-Identifier: MIT
#pragma once

// What the sequence diagrams look like, and the page around them.
namespace zviptv::ctl {

constexpr char DiagramColours[] = R"text(
:root { color-scheme: light dark; --paper: #ffffff; --text: #1c2430; --quiet: #647080; --line: #c4ccd6;
  --box: #edf2fa; --hover: #f3f6fb; --request: #2563c9; --reply: #1f7a48; --refused: #a85f00; --error: #c4202c;
  --push: #6b3fc4; --announcement: #4c5a6b; }
@media (prefers-color-scheme: dark) {
  :root { --paper: #12161c; --text: #e6ebf2; --quiet: #93a0b0; --line: #3a4553; --box: #1e2836; --hover: #19202a;
    --request: #74acff; --reply: #5fcb8d; --refused: #f0ab45; --error: #ff7d76; --push: #b99af5;
    --announcement: #a9b6c6; } }
)text";

constexpr char DiagramShapes[] = R"text(
svg { font-family: system-ui, "Segoe UI", "DejaVu Sans", sans-serif; font-size: 12px; }
svg .paper { fill: var(--paper); }
svg .background { fill: transparent; }
svg .row:hover .background { fill: var(--hover); }
svg .life { stroke: var(--line); stroke-width: 1.5; }
svg .head { fill: var(--box); stroke: var(--line); }
svg text { fill: var(--text); }
svg .name { font-weight: 600; }
svg .time, svg .detail { font-family: "DejaVu Sans Mono", ui-monospace, monospace; font-size: 11.5px; }
svg .time, svg .quiet { fill: var(--quiet); }
svg .label { paint-order: stroke; stroke: var(--paper); stroke-width: 3px; }
svg .pause .label { font-style: italic; }
svg .cross { stroke: var(--quiet); stroke-width: 2; }
svg .row { --colour: var(--text); }
svg .request { --colour: var(--request); }
svg .reply { --colour: var(--reply); }
svg .refused { --colour: var(--refused); }
svg .error { --colour: var(--error); }
svg .push { --colour: var(--push); }
svg .announcement { --colour: var(--announcement); }
svg .arrow { stroke: var(--colour); stroke-width: 1.5; }
svg .reply .arrow, svg .refused .arrow { stroke-dasharray: 5 3; }
svg .push .arrow { stroke-width: 3; }
svg .tip, svg .dot { fill: var(--colour); }
svg .error .detail, svg .refused .detail, svg .error .label { fill: var(--colour); }
)text";

constexpr char PageHead[] = R"text(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Trace of the IPTV service</title>
<style>)text";

constexpr char PageBody[] = R"text(
body { margin: 0; background: var(--paper); color: var(--text); font: 14px/1.4 system-ui, sans-serif; }
header { position: sticky; top: 0; left: 0; z-index: 1; display: flex; flex-wrap: wrap; gap: 8px 16px;
  align-items: center; padding: 10px 16px; background: var(--box); border-bottom: 1px solid var(--line); }
h1 { font-size: 16px; margin: 0; }
input[type=search] { font: inherit; padding: 4px 8px; width: 20em; max-width: 60vw; color: inherit;
  background: var(--paper); border: 1px solid var(--line); border-radius: 6px; }
.legend span { margin-right: 12px; white-space: nowrap; }
.legend span::before { content: ""; display: inline-block; width: 14px; height: 3px; margin: 0 5px 4px 0;
  vertical-align: bottom; background: var(--colour); }
main { overflow-x: auto; padding-bottom: 40vh; }
svg .row { cursor: pointer; outline: none; }
svg .row:focus .background, svg .chosen .background { fill: var(--box); }
#message { position: fixed; bottom: 0; left: 0; right: 0; max-height: 36vh; overflow: auto; margin: 0;
  padding: 12px 16px; background: var(--box); border-top: 2px solid var(--request); white-space: pre-wrap;
  overflow-wrap: anywhere; font: 12px/1.5 "DejaVu Sans Mono", ui-monospace, monospace; }
#message[hidden] { display: none; }
</style>
</head>
<body>
<header>
<h1>Trace of the IPTV service</h1>
<label>Search <input id="search" type="search" placeholder="function, value, application"></label>
<label><input id="pushes" type="checkbox" checked> pushes</label>
<span id="count" aria-live="polite"></span>
<span class="legend"><span style="--colour: var(--request)">request</span><span
 style="--colour: var(--reply)">reply</span><span style="--colour: var(--refused)">refused</span><span
 style="--colour: var(--error)">error</span><span style="--colour: var(--push)">pushes</span></span>
</header>
<main>
)text";

constexpr char PageEnd[] = R"text(</main>
<pre id="message" hidden></pre>
<script>
"use strict";
const svg = document.querySelector("svg");
const rows = [...svg.querySelectorAll(".row")];
const search = document.getElementById("search");
const pushes = document.getElementById("pushes");
const message = document.getElementById("message");
const texts = rows.map(row => row.textContent.toLowerCase());
const top_ = 64;

function layOut() {
    const wanted = search.value.trim().toLowerCase();
    let y = top_, shown = 0;
    rows.forEach((row, index) => {
        const isHidden = !texts[index].includes(wanted) || (!pushes.checked && row.classList.contains("push")) ||
            (wanted !== "" && row.classList.contains("pause"));
        row.style.display = isHidden ? "none" : "";
        if (!isHidden) {
            row.setAttribute("transform", `translate(0,${y})`);
            y += Number(row.dataset.height);
            shown += 1;
        }
    });
    svg.setAttribute("height", y + 40);
    svg.setAttribute("viewBox", `0 0 ${svg.getAttribute("width")} ${y + 40}`);
    document.getElementById("count").textContent = `${shown} of ${rows.length} rows`;
}

function choose(row) {
    svg.querySelectorAll(".chosen").forEach(other => other.classList.remove("chosen"));
    const title = row && row.querySelector("title");
    message.hidden = !title;
    if (title) {
        row.classList.add("chosen");
        message.textContent = title.textContent;
    }
}

rows.forEach(row => row.setAttribute("tabindex", "0"));
search.addEventListener("input", layOut);
pushes.addEventListener("change", layOut);
svg.addEventListener("click", event => choose(event.target.closest(".row")));
document.addEventListener("keydown", event => {
    const row = document.activeElement.closest(".row");
    if (event.key === "Escape") {
        choose(null);
    } else if (row && (event.key === "Enter" || event.key === " ")) {
        event.preventDefault();
        choose(row);
    }
});
layOut();
</script>
</body>
</html>
)text";

} // namespace zviptv::ctl
