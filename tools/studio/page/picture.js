// The picture: the frame, the segmenter's regions over it, and drawing rectangles or brush
// strokes that give pixels to the selected class.
"use strict";
(function () {
  const canvas = document.getElementById("picture");
  const ctx = canvas.getContext("2d");
  // Each picture is a slot: the URL wanted last, and the bitmap of the last one that came.
  const frame = {}, layers = {classified: {}, overlaps: {}};
  let drag = null;

  const option = (id) => document.getElementById(id).checked;

  function draw() {
    const s = Studio.state;
    if (!s || !frame.bitmap) return;
    ctx.drawImage(frame.bitmap, 0, 0);
    if (option("show-classified") && layers.classified.bitmap) ctx.drawImage(layers.classified.bitmap, 0, 0);
    if (option("show-overlaps") && layers.overlaps.bitmap) ctx.drawImage(layers.overlaps.bitmap, 0, 0);
    if (option("show-regions")) s.classes.forEach((c, i) => drawRegion(s.result.regions[i], c, s.palette[i % s.palette.length]));
    if (drag) drawDrag();
  }

  function drawRegion(region, cls, colour) {
    if (!region || !region.pixelCount) return;
    ctx.fillStyle = colour + "70";
    region.lines.forEach(([x0, y, x1]) => ctx.fillRect(x0, y, x1 - x0 + 1, 1));
    const [x, y, w, h] = region.box;
    ctx.strokeStyle = colour;
    ctx.lineWidth = 2;
    ctx.strokeRect(x - 1, y - 1, w + 2, h + 2);
    const [cx, cy] = region.center;
    ctx.beginPath();
    ctx.moveTo(cx - 7, cy); ctx.lineTo(cx + 7, cy); ctx.moveTo(cx, cy - 7); ctx.lineTo(cx, cy + 7);
    ctx.strokeStyle = "#fff"; ctx.stroke();
    ctx.font = "bold 13px system-ui";
    const text = `${cls.name} ${region.pixelCount} px (${cx}, ${cy})`;
    ctx.fillStyle = "#000b";
    ctx.fillRect(x - 1, y - 18, ctx.measureText(text).width + 6, 16);
    ctx.fillStyle = colour;
    ctx.fillText(text, x + 2, y - 5);
  }

  function drawDrag() {
    ctx.strokeStyle = "#fff";
    ctx.fillStyle = "#ffffff40";
    ctx.lineWidth = 1;
    if (drag.tool === "rect") {
      const [x, y, w, h] = rectOf(drag);
      ctx.fillRect(x, y, w, h);
      ctx.strokeRect(x + 0.5, y + 0.5, w - 1, h - 1);
    } else {
      drag.points.forEach(([x, y]) => { ctx.beginPath(); ctx.arc(x, y, drag.radius + 0.5, 0, 7); ctx.fill(); });
    }
  }

  // Picture pixel under the pointer, whatever the canvas's displayed size.
  function pixel(event) {
    const box = canvas.getBoundingClientRect();
    return [Math.floor((event.clientX - box.left) * canvas.width / box.width),
            Math.floor((event.clientY - box.top) * canvas.height / box.height)];
  }

  const clamp = (v, high) => Math.max(0, Math.min(high - 1, v));

  // The rectangle between the two corners, both taken, kept inside the picture.
  function rectOf(d) {
    const [ax, ay] = d.start, [bx, by] = d.end;
    const x0 = clamp(Math.min(ax, bx), canvas.width), x1 = clamp(Math.max(ax, bx), canvas.width);
    const y0 = clamp(Math.min(ay, by), canvas.height), y1 = clamp(Math.max(ay, by), canvas.height);
    return [x0, y0, x1 - x0 + 1, y1 - y0 + 1];
  }

  canvas.addEventListener("mousedown", (event) => {
    if (event.button !== 0) return;
    const tool = document.querySelector("input[name=tool]:checked").value;
    const p = pixel(event);
    drag = {tool, start: p, end: p, points: [p], radius: +document.getElementById("radius").value || 0};
    draw();
  });
  canvas.addEventListener("mousemove", (event) => {
    const [x, y] = pixel(event);
    document.getElementById("pointer").textContent = `${x}, ${y}`;
    if (!drag) return;
    drag.end = [x, y];
    if (drag.tool === "brush") drag.points.push([x, y]);
    draw();
  });
  window.addEventListener("mouseup", async () => {
    if (!drag) return;
    const d = drag;
    drag = null;
    if (!Studio.state.classes.length) { draw(); return Studio.show("Add a class first, then draw on the picture to give it pixels."); }
    const body = d.tool === "rect" ? {rect: rectOf(d)} : {stroke: {points: d.points, radius: d.radius}};
    if (!await Studio.post("class/sample", Object.assign({index: Studio.selected}, body))) draw();
  });

  // The server sends raw RGBA rows; a reply that a newer request overtook is dropped.
  async function load(slot, url, width, height) {
    if (slot.url === url) return;
    slot.url = url;
    const reply = await fetch(url).catch(() => null);
    if (!reply || !reply.ok || slot.url !== url) return;
    const data = new Uint8ClampedArray(await reply.arrayBuffer());
    if (slot.url !== url || data.length !== width * height * 4) return;
    slot.bitmap = await createImageBitmap(new ImageData(data, width, height));
    draw();
  }

  function loadAll() {
    const s = Studio.state, src = s.source;
    load(frame, `/api/frame.rgba?key=${encodeURIComponent(`${src.name}/${src.frame}/${s.version}`)}`, src.width, src.height);
    Object.keys(layers).forEach((what) => {
      if (option("show-" + what)) load(layers[what], `/api/layer.rgba?what=${what}&v=${s.version}`, src.width, src.height);
      else layers[what].bitmap = null, layers[what].url = null;
    });
  }

  Studio.listeners.push((s) => {
    const src = s.source;
    if (canvas.width !== src.width || canvas.height !== src.height) {
      canvas.width = src.width;
      canvas.height = src.height;
    }
    loadAll();
    draw();
    video(s);
  });
  ["show-classified", "show-overlaps"].forEach((id) => document.getElementById(id).addEventListener("change", loadAll));
  document.getElementById("show-regions").addEventListener("change", draw);

  // ------------------------------------------------------------------ video frames
  let playing = null;
  function video(s) {
    const src = s.source;
    document.getElementById("video").hidden = src.kind !== "video";
    document.getElementById("source-name").textContent = `${src.name}, ${src.width} x ${src.height}`;
    const seek = document.getElementById("seek");
    seek.max = src.count - 1;
    seek.value = src.frame;
    document.getElementById("frame-label").textContent = `frame ${src.frame + 1} of ${src.count}`;
  }
  const go = (i) => Studio.post("frame", {frame: Math.max(0, Math.min(Studio.state.source.count - 1, i))});
  document.getElementById("prev").onclick = () => go(Studio.state.source.frame - 1);
  document.getElementById("next").onclick = () => go(Studio.state.source.frame + 1);
  document.getElementById("seek").onchange = (e) => go(+e.target.value);
  document.getElementById("play").onclick = async (e) => {
    if (playing) { playing = null; e.target.textContent = "Play"; return; }
    playing = {};
    const mine = playing;
    e.target.textContent = "Pause";
    const fps = Studio.state.source.fps || 25;
    while (playing === mine && Studio.state.source.frame + 1 < Studio.state.source.count) {
      const started = performance.now();
      if (!await go(Studio.state.source.frame + 1)) break;
      await new Promise((r) => setTimeout(r, Math.max(0, 1000 / fps - (performance.now() - started))));
    }
    if (playing === mine) { playing = null; e.target.textContent = "Play"; }
  };
  Studio.redraw = draw;
})();
