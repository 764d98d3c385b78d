// The view for printing: a strip of labels for each container of the set and each module, at true size.

import { button, el, foreign, whenChanged } from "./dom.js";
import { clip } from "./state.js";

export class LabelsView {
  /** @param {import("./app.js").App} app */
  constructor(app) {
    this.app = app;
    this.strips = el("div", { className: "strips" });
    this.element = el("div", { className: "page labels" },
      el("div", { className: "toolbar" }, el("h2", {}, "Labels"), button("Print…", () => window.print(), { className: "primary" })),
      el("p", { className: "hint" }, "Print at 100 %, without scaling. The line below the last strip is then 100 mm long."),
      this.strips, el("div", { className: "ruler" }, "100 mm"));
    this.drawStrips = whenChanged((units) => this.strips.replaceChildren(...units.map((/** @type {any} */ unit) => this.#strip(unit))));
  }

  draw() {
    const units = this.app.state.units().filter(({ places }) => places.some(({ key }) => key));
    this.drawStrips(units.map(({ name, places }) => ({ name, places: places.map(({ place, label, number, key }) => ({
      place, label, number, key: key && { id: key.idKey, action: key.idAction } })) })));
  }

  /** @param {{name: string, places: any[]}} unit */
  #strip({ name, places }) {
    const cells = places.map(({ place, label, number, key }) => el("li", { "data-place": place,
      ...(key ? { "data-key-id": String(key.id), "data-action-id": String(key.action) } : {}),
      "aria-label": `${label || "empty"}: ${number}` }, foreign(label), el("small", {}, String(number))));
    const list = el("ol", { className: "strip" }, ...cells);
    list.style.setProperty("--rows", String(Math.ceil(cells.length / 2)));
    return el("section", {}, el("h3", {}, foreign(clip(name, 60) || "(no name)")), list);
  }
}
