// The view for printing: a strip of labels for each container of the set and each module, at true size.

import { el, foreign, one, template, whenChanged } from "./dom.js";
import { clip } from "./records.js";

export class LabelsView {
  /** @param {App} app */
  constructor(app) {
    this.app = app;
    this.element = template("labels-view");
    one(".print", this.element).onclick = () => window.print();
    this.drawStrips = whenChanged((units) => one(".strips", this.element).replaceChildren(...units.map(strip)));
  }

  draw() {
    this.drawStrips(this.app.state.units().filter(({ places }) => places.some(({ key }) => key)));
  }
}

/** @param {Unit} unit */
function strip({ name, places }) {
  const cells = places.map(({ place, label, number, key }) => el("li", { "data-place": place,
    ...(key ? { "data-key-id": key.idKey, "data-action-id": key.idAction } : {}),
    "aria-label": `${label || "empty"}: ${number}` }, foreign(label), el("small", {}, String(number))));
  const list = el("ol", { className: "strip" }, ...cells);
  list.style.setProperty("--rows", String(Math.ceil(cells.length / 2)));
  return el("section", {}, el("h3", {}, foreign(clip(name, 60) || "(no name)")), list);
}
