// Talking to the studio server: one tab owns the session; every change is a POST that
// answers with the whole new state, which the page then draws.
"use strict";
const Studio = {state: null, selected: 0, listeners: []};

Studio.tab = Math.random().toString(36).slice(2) + Date.now().toString(36);

Studio.show = function (text, kind) {
  const box = document.getElementById("message");
  document.getElementById("message-text").textContent = text;
  box.className = kind || "";
  box.hidden = false;
  document.getElementById("take-over").hidden = kind !== "other-tab";
};

Studio.hide = function () { document.getElementById("message").hidden = true; };

Studio.receive = function (state) {
  Studio.state = state;
  // A class removed (or undone) may have been the selected one.
  Studio.selected = Math.max(0, Math.min(Studio.selected, state.classes.length - 1));
  Studio.listeners.forEach((f) => f(state));
};

async function request(path, options) {
  let reply;
  try {
    reply = await fetch(path, options);
  } catch (e) {
    Studio.show("The studio server does not answer; is nuv_studio still running?");
    return null;
  }
  const body = await reply.json().catch(() => ({error: "The server sent no JSON."}));
  if (!reply.ok) {
    Studio.show(body.error || reply.statusText, reply.status === 409 && /another browser tab/.test(body.error) ? "other-tab" : "");
    return null;
  }
  return body;
}

// A change: the reply is the new state (or, for save, what was written).
Studio.post = async function (op, body) {
  const reply = await request("/api/" + op, {
    method: "POST", headers: {"Content-Type": "application/json"},
    body: JSON.stringify(Object.assign({tab: Studio.tab}, body || {})),
  });
  if (reply && reply.version !== undefined) Studio.receive(reply);
  return reply;
};

Studio.claim = async function (force) {
  const state = await Studio.post("claim", {force: !!force});
  if (state) Studio.hide();
  else Studio.receive(await request("/api/state"));  // a look at the session all the same
};

Studio.sendPicture = async function (file) {
  const state = await request("/api/picture?tab=" + Studio.tab + "&name=" + encodeURIComponent(file.name), {
    method: "POST", headers: {"Content-Type": "application/octet-stream"}, body: file,
  });
  if (state) Studio.receive(state);
};

// The tab says it is still there, so a second tab is told the session is taken.
setInterval(() => fetch("/api/ping?tab=" + Studio.tab).catch(() => {}), 5000);
