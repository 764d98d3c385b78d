// The view of all actions.

import { button, el, foreign, whenChanged } from "./dom.js";
import { RESERVED_ACTION, clip } from "./state.js";

export class ActionsView {
  /** @param {import("./app.js").App} app */
  constructor(app) {
    this.app = app;
    this.rows = el("tbody");
    const titles = ["Id", "Label", "Short label", "Does", "Keys", "Origin", ""];
    this.element = el("div", { className: "page" },
      el("div", { className: "toolbar" }, el("h2", {}, "Actions"),
        button("New action…", () => app.editAction(null), { writes: true, className: "primary" })),
      el("div", { className: "scroll" }, el("table", {}, el("thead", {}, el("tr", {}, ...titles.map((title) => el("th", { scope: "col" }, title)))), this.rows)));
    this.drawRows = whenChanged((rows) => this.rows.replaceChildren(...rows.map((/** @type {any} */ row) => this.#row(row))));
  }

  draw() {
    const { state } = this.app;
    /** @type {Map<number, number>} */
    const counts = new Map();
    for (const key of state.keys.values())
      counts.set(key.idAction, (counts.get(key.idAction) ?? 0) + 1);
    this.drawRows([...state.actions.values()].map(({ idAction, dmId, label, shortLabel, action, webAppName, arguments: values }) => ({
      idAction, keys: counts.get(idAction) ?? 0, dmId: clip(dmId, 40), label: clip(label), shortLabel: clip(shortLabel, 40),
      does: clip([action, webAppName, values].filter(Boolean).join(" · ")) })));
  }

  /** @param {any} row */
  #row({ idAction, keys, dmId, label, shortLabel, does }) {
    const act = (/** @type {(action: any) => void} */ what) => () => {
      const action = this.app.state.actions.get(idAction);
      if (action)
        what(action);
    };
    const isReserved = idAction === RESERVED_ACTION;
    const name = label || `action ${idAction}`;
    const edit = button("Edit", act((action) => this.app.editAction(action)), { writes: true });
    const remove = button("Delete", act((action) => this.app.deleteAction(action)), { writes: true, className: "danger" });
    edit.setAttribute("aria-label", `Edit ${name}`);
    remove.setAttribute("aria-label", `Delete ${name}`);
    return el("tr", { "data-action-id": String(idAction) }, el("td", { className: "figure" }, String(idAction)),
      el("td", {}, foreign(label || "(no label)", label ? "" : "none")), el("td", {}, foreign(shortLabel)), el("td", {}, foreign(does)),
      el("td", { className: "figure" }, String(keys)),
      el("td", {}, isReserved ? "reserved" : dmId ? el("span", {}, "provisioned as ", foreign(dmId)) : "made by a user"),
      el("td", { className: "buttons" }, edit, remove));
  }
}
