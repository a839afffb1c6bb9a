// The selected class as the segmenter uses it: per channel the 256 values it takes, drawn
// as a strip under the channel's histogram (grey: the frame, coloured: the class's given
// pixels), with the values another class takes too marked red. Dragging along a channel
// switches a range on, or off when the drag starts on a value the class takes.
"use strict";
(function () {
  const NAMES = ["channel 0 (blue)", "channel 1 (green)", "channel 2 (red)"];
  const W = 512, HIST = 64, STRIP = 16, MARK = 6, H = HIST + STRIP + MARK + 6;
  const box = document.getElementById("channels");
  const panels = NAMES.map((name, c) => {
    const div = document.createElement("div");
    div.className = "channel";
    div.innerHTML = `<div class="label"><label><input type="checkbox"> ${name}</label> <span></span></div>`;
    const canvas = document.createElement("canvas");
    canvas.width = W; canvas.height = H;
    canvas.dataset.channel = c;
    div.appendChild(canvas);
    box.appendChild(div);
    const used = div.querySelector("input");
    used.onchange = () => Studio.post("class/channel", {index: Studio.selected, channel: c, used: used.checked});
    return {div, canvas, used, text: div.querySelector("span"), drag: null};
  });

  function valueAt(canvas, event) {
    const b = canvas.getBoundingClientRect();
    return Math.max(0, Math.min(255, Math.floor((event.clientX - b.left) * 256 / b.width)));
  }

  function drawHistogram(ctx, counts, colour) {
    const peak = Math.sqrt(Math.max(1, ...counts));
    ctx.fillStyle = colour;
    counts.forEach((n, v) => {
      const h = Math.round(HIST * Math.sqrt(n) / peak);
      ctx.fillRect(2 * v, HIST - h, 2, h);
    });
  }

  function drawPanel(p, c) {
    const s = Studio.state, cls = s.classes[Studio.selected];
    const ctx = p.canvas.getContext("2d");
    ctx.clearRect(0, 0, W, H);
    drawHistogram(ctx, s.histogram[c], "#777");
    if (!cls) return;
    const colour = s.palette[Studio.selected % s.palette.length];
    drawHistogram(ctx, cls.histogram[c], colour + "c0");
    const mask = cls.masks[c];
    const others = s.classes.filter((o, i) => i !== Studio.selected && o.active);
    for (let v = 0; v < 256; v++) {
      let on = mask[v] === "1";
      if (p.drag && v >= Math.min(p.drag.from, p.drag.to) && v <= Math.max(p.drag.from, p.drag.to)) on = p.drag.on;
      ctx.fillStyle = on ? colour : "#2b2b2b";
      ctx.fillRect(2 * v, HIST + 2, 2, STRIP);
      if (mask[v] === "1" && others.some((o) => o.masks[c][v] === "1")) {
        ctx.fillStyle = "#ff2020";
        ctx.fillRect(2 * v, HIST + STRIP + 4, 2, MARK);
      }
    }
    const taken = mask.split("1").length - 1;
    p.used.checked = (cls.channels >> c) & 1;
    p.text.textContent = (p.used.checked ? "" : "not used: takes every value; ") +
      `${taken} of 256 values taken`;
  }

  panels.forEach((p, c) => {
    p.canvas.addEventListener("mousedown", (event) => {
      const cls = Studio.state && Studio.state.classes[Studio.selected];
      if (!cls) return Studio.show("Add a class first.");
      const v = valueAt(p.canvas, event);
      p.drag = {from: v, to: v, on: cls.masks[c][v] !== "1"};
      drawPanel(p, c);
    });
    p.canvas.addEventListener("mousemove", (event) => {
      p.canvas.title = `value ${valueAt(p.canvas, event)}`;
      if (!p.drag) return;
      p.drag.to = valueAt(p.canvas, event);
      drawPanel(p, c);
    });
    window.addEventListener("mouseup", () => {
      if (!p.drag) return;
      const d = p.drag;
      p.drag = null;
      Studio.post("class/mask", {index: Studio.selected, channel: c, low: Math.min(d.from, d.to),
        high: Math.max(d.from, d.to), on: d.on}).then((ok) => ok || drawPanel(p, c));
    });
  });

  Studio.drawMasks = () => {
    if (!Studio.state) return;
    const cls = Studio.state.classes[Studio.selected];
    box.hidden = !cls;
    document.getElementById("masks-title").textContent = cls ?
      `Masks of ${cls.name}: drag on to take values, from a taken value to drop them` : "Masks";
    panels.forEach(drawPanel);
  };
  Studio.listeners.push(Studio.drawMasks);
})();
