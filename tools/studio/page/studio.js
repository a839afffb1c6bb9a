// Wiring of the header, the keyboard and the start of the page.
"use strict";
(function () {
  const $ = (id) => document.getElementById(id);
  const plural = (n) => `${n} class${n === 1 ? "" : "es"}`;
  $("undo").onclick = () => Studio.post("undo");
  $("redo").onclick = () => Studio.post("redo");
  $("save").onclick = async () => {
    const saved = await Studio.post("classes/save");
    if (!saved) return;
    Studio.show(`Saved ${plural(Studio.state.classes.length)} to ${saved.saved}`, "info");
    $("download").href = URL.createObjectURL(new Blob([saved.text], {type: "text/plain"}));
  };
  $("download").onclick = async (e) => {
    if ($("download").href.startsWith("blob:")) return;
    e.preventDefault();
    Studio.show("Save first; Download then gives the saved text.");
  };
  $("load-file").onchange = async (e) => {
    const file = e.target.files[0];
    e.target.value = "";
    if (!file) return;
    if (await Studio.post("classes/load", {text: await file.text()}))
      Studio.show(`Loaded ${plural(Studio.state.classes.length)} from ${file.name}`, "info");
  };
  $("picture-file").onchange = (e) => {
    const file = e.target.files[0];
    e.target.value = "";
    if (file) Studio.sendPicture(file);
  };
  $("add-class").onsubmit = async (e) => {
    e.preventDefault();
    if (await Studio.post("class/add", {name: $("new-name").value})) {
      Studio.selected = Studio.state.classes.length - 1;
      $("new-name").value = "";
      Studio.receive(Studio.state);
    }
  };
  $("min-run").onchange = (e) => Studio.post("settings", {minRun: e.target.value === "auto" ? "auto" : +e.target.value});
  $("message-close").onclick = Studio.hide;
  $("take-over").onclick = () => Studio.claim(true);
  document.addEventListener("keydown", (e) => {
    if (!(e.ctrlKey || e.metaKey) || e.target.tagName === "INPUT") return;
    const key = e.key.toLowerCase();
    if (key === "z" && !e.shiftKey) { e.preventDefault(); Studio.post("undo"); }
    if (key === "y" || (key === "z" && e.shiftKey)) { e.preventDefault(); Studio.post("redo"); }
  });
  Studio.claim(false);
})();
