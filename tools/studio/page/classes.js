// The class list with what the segmenter found of each, the overlaps between classes and
// the segmenter's settings and timing.
"use strict";
(function () {
  const list = document.getElementById("classes");

  function element(tag, props, children) {
    const {dataset, ...rest} = props || {};
    const e = Object.assign(document.createElement(tag), rest);
    Object.assign(e.dataset, dataset || {});
    (children || []).forEach((c) => e.append(c));
    return e;
  }

  function button(text, title, action) {
    return element("button", {textContent: text, title, className: "small", onclick: (e) => { e.stopPropagation(); action(); }});
  }

  function found(cls, region) {
    if (!cls.active) return element("div", {className: "found none", textContent: "takes no colour yet: draw on the picture to give it pixels"});
    if (!region || !region.pixelCount) return element("div", {className: "found none", textContent: "not found in this frame", dataset: {count: 0}});
    const [x, y] = region.center;
    return element("div", {className: "found", textContent: `largest region ${region.pixelCount} px, centre (${x}, ${y})`,
                           dataset: {count: region.pixelCount, cx: x, cy: y}});
  }

  function card(s, cls, i) {
    const post = (op, body) => Studio.post(op, Object.assign({index: i}, body));
    const [b, g, r] = cls.mean;
    const head = element("div", {className: "head"}, [
      element("span", {className: "swatch", style: `background:${s.palette[i % s.palette.length]}`, title: "drawn in this colour"}),
      element("span", {className: "swatch", style: `background:rgb(${r},${g},${b})`, title: `mean colour (channels ${b}, ${g}, ${r}), the class's identity`}),
      element("span", {className: "name", textContent: cls.name}),
      button("↑", "earlier: wins colours two classes take", () => i > 0 && post("class/move", {to: i - 1})),
      button("↓", "later", () => i + 1 < s.classes.length && post("class/move", {to: i + 1})),
      button("Rename", "", () => { const name = prompt("New name", cls.name); if (name !== null) post("class/rename", {name}); }),
      button("Delete", "", () => post("class/delete")),
    ]);
    const dilate = element("input", {type: "number", min: -255, max: 255, value: cls.dilate,
                                     onchange: (e) => post("class/dilate", {dilate: parseInt(e.target.value, 10) || 0})});
    const samples = element("ul", {}, cls.samples.map((sm, k) => element("li", {}, [
      `${sm.kind} ${sm.where}` + (s.source.kind === "video" ? ` on frame ${sm.frame + 1}` : "") + `: ${sm.count} px `,
      button("×", "take these pixels back", () => post("class/unsample", {sample: k}))])));
    if (cls.loaded) samples.prepend(element("li", {textContent: "loaded from a class file"}));
    if (cls.edits) samples.append(element("li", {textContent: `${cls.edits} range${cls.edits > 1 ? "s" : ""} switched by hand`}));
    const li = element("li", {className: "class" + (i === Studio.selected ? " selected" : ""), dataset: {index: i, name: cls.name}}, [
      head, found(cls, s.result.regions[i]), element("label", {}, ["dilation ", dilate]), samples]);
    li.onclick = () => { Studio.selected = i; render(s); Studio.drawMasks(); };
    return li;
  }

  function overlaps(s) {
    const ul = document.getElementById("overlaps");
    const items = s.overlaps.map((o) => element("li", {className: "warn",
      textContent: `${o.a} and ${o.b} both take ${o.colours} colours (${o.perChannel.join(" × ")} values); ` +
                   `${o.pixels} px of this frame, which go to ${o.a}`}));
    s.sameMean.forEach(([a, b]) => items.push(element("li", {className: "warn",
      textContent: `${a} and ${b} have the same mean colour: the segmenter reports one region for both`})));
    if (!items.length) items.push(element("li", {textContent: "none: no two classes take a common colour"}));
    ul.replaceChildren(...items);
  }

  function render(s) {
    list.replaceChildren(...s.classes.map((c, i) => card(s, c, i)));
    overlaps(s);
    const r = s.result;
    document.getElementById("min-run").options[0].textContent = `auto (${s.settings.natural})`;
    document.getElementById("min-run").value = String(s.settings.minRun);
    document.getElementById("timing").textContent = r.ms === null ? "no class to look for" :
      `minimum run ${r.run}; ${r.ms.toFixed(3)} ms per frame at slot ${s.slot}`;
    document.getElementById("timing").dataset.ms = r.ms;
    document.getElementById("out").textContent = `Save writes ${s.out}`;
    document.getElementById("undo").disabled = !s.undo;
    document.getElementById("redo").disabled = !s.redo;
  }
  Studio.listeners.push(render);
})();
