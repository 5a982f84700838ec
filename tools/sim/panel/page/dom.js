// SPDX-License-Identifier: MIT
// Helpers with which all parts of the page change the document.

export const byId = id => document.getElementById(id);

/** An element with attributes, properties for those that begin with "on", and children. */
export function make(name, attributes = {}, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (key.startsWith("on")) {
      element[key] = value;
    } else if (key === "style") {
      element.style.cssText = value; // the content security policy forbids the attribute
    } else if (value !== undefined && value !== false) {
      element.setAttribute(key, value === true ? "" : value);
    }
  }
  element.append(...children.filter(child => child !== null && child !== undefined));
  return element;
}

/** Sets the text if it differs, to avoid needless drawing and reading aloud. */
export function setText(element, text) {
  if (element.textContent !== text) {
    element.textContent = text;
  }
}

/** Replaces the children, unless they would look the same. Keeps the focus on the child with the same data-key. */
export function setChildren(element, ...children) {
  const next = children.filter(Boolean);
  const look = next.map(child => child.outerHTML).join("");
  if (element.dataset.look === look) {
    return;
  }
  const focused = element.contains(document.activeElement) ? document.activeElement.dataset.key : undefined;
  element.dataset.look = look;
  element.replaceChildren(...next);
  if (focused !== undefined) {
    element.querySelector(`[data-key="${CSS.escape(focused)}"]`)?.focus();
  }
}

export function setIcon(element, name) {
  element.querySelector("use").setAttribute("href", `icon.svg#${name}`);
}

/** 75.25 is "1:15.2", 3675 is "1:01:15.0". */
export function clockText(seconds, digits = 1) {
  const unit = 10 ** digits;
  const whole = Math.floor(Math.max(seconds, 0) * unit) / unit;
  const rest = (whole % 60).toFixed(digits).padStart(digits ? digits + 3 : 2, "0");
  const minutes = Math.floor(whole / 60);
  return minutes < 60 ? `${minutes}:${rest}`
    : `${Math.floor(minutes / 60)}:${String(minutes % 60).padStart(2, "0")}:${rest}`;
}

export const hexText = (number, digits = 4) => `0x${number.toString(16).padStart(digits, "0")}`;
