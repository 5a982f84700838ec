// SPDX-License-Identifier: MIT
// The properties of the television, and the listeners for their changes.

/** The properties of the control interface by name, with their last reported values. Those whose names begin with
 *  "Panel" belong to the panel. */
export const state = {};

const watchers = [];

/** Calls `show` now and whenever one of the properties changes. */
export function watch(properties, show) {
  watchers.push({ properties, show });
  if (properties.some(name => name in state)) {
    show(state);
  }
}

export function update(changes) {
  Object.assign(state, changes);
  for (const { properties, show } of watchers) {
    if (properties.some(name => name in changes)) {
      show(state);
    }
  }
}
