// SPDX-License-Identifier: MIT
// The connection to the simulator.

const retryAfter = 1000;

/** The reason why the simulator refuses a WebSocket, which cannot report it itself; empty if it accepts. */
async function refusalOf(address) {
  try {
    const answer = await fetch(address);
    return answer.status === 503 ? (await answer.text()).trim() : "";
  } catch {
    return "";
  }
}

/** Opens a WebSocket below the page's address, and reopens it whenever it ends. `take` gets each message; after `take` has
 *  processed it, the message is answered, and the simulator sends the next one. `onChange` gets whether the socket is open
 *  and, if it was refused, the reason. Returns a function that ends it. */
export function listen(name, take, onChange = () => {}) {
  let socket = null;
  let isWanted = true;
  const open = () => {
    const address = new URL(name, location.href);
    address.protocol = "ws:";
    socket = new WebSocket(address);
    socket.binaryType = "blob";
    let wasOpen = false;
    socket.onopen = () => {
      wasOpen = true;
      onChange(true, "");
    };
    socket.onmessage = async message => {
      const from = socket;
      await take(message.data);
      if (from.readyState === WebSocket.OPEN) {
        from.send("seen");
      }
    };
    socket.onclose = async () => {
      onChange(false, wasOpen || !isWanted ? "" : await refusalOf(name));
      if (isWanted) {
        setTimeout(() => isWanted && open(), retryAfter);
      }
    };
  };
  open();
  return () => {
    isWanted = false;
    socket.close();
  };
}

const listeners = [];

/** Calls `listener` with the words of each verb that the simulator has accepted, and with the time of the call by
 *  performance.now(). */
export function onVerb(listener) {
  listeners.push(listener);
}

/** Runs a verb; its words are those of `zviptvctl sim`. Shows an error. Resolves to true if the verb succeeded. */
export async function run(...words) {
  const calledAt = performance.now();
  let error = "the simulator does not answer; check that it still runs";
  try {
    const answer = await fetch("api/verb", {
      method: "POST",
      headers: { "Content-Type": "application/json" },
      body: JSON.stringify({ words: words.map(String) }),
    });
    error = answer.ok ? "" : answer.status === 403 ? await answer.text() : (await answer.json()).error;
  } catch (failure) {
    console.warn(failure);
  }
  if (error) {
    showError(error);
    return false;
  }
  listeners.forEach(listener => listener(words.map(String), calledAt));
  return true;
}

const longestShown = 8000;

export function showError(text) {
  const item = document.createElement("div");
  item.className = "toast";
  const line = document.createElement("p");
  line.textContent = text;
  const close = document.createElement("button");
  close.type = "button";
  close.textContent = "Close";
  close.onclick = () => item.remove();
  item.append(line, close);
  document.getElementById("messages-area").append(item);
  setTimeout(() => item.matches(":hover, :focus-within") || item.remove(), longestShown);
}
