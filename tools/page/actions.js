// The view of all actions.

import { arrange, button, el, foreign, whenChanged } from "./dom.js";
import { RESERVED_ACTION, clip } from "./state.js";

const TITLES = ["Id", "Label", "Short label", "Does", "Keys", "Origin"];

export class ActionsView {
  /** @param {import("./app.js").App} app */
  constructor(app) {
    this.app = app;
    /** @type {Map<number, {element: any, draw: (row: any) => void}>} */
    this.rowOf = new Map();
    this.rows = el("tbody", { role: "rowgroup" });
    this.create = button("New action…", () => app.editAction(null), { writes: true, className: "primary" });
    const heads = [...TITLES, "Change"].map((title) => el("th", { scope: "col", role: "columnheader" }, title));
    this.element = el("div", { className: "page" },
      el("div", { className: "toolbar" }, el("h2", {}, "Actions"), this.create),
      el("div", { className: "scroll" }, el("table", { role: "table" },
        el("thead", { role: "rowgroup" }, el("tr", { role: "row" }, ...heads)), this.rows)));
    this.drawRows = whenChanged((rows) => this.#drawRows(rows));
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

  /** Draws the rows. Those that stay keep their buttons, and with them the focus.
   * @param {any[]} rows */
  #drawRows(rows) {
    const focused = this.rows.contains(document.activeElement) ? document.activeElement : null;
    const before = this.rowOf;
    this.rowOf = new Map(rows.map((row) => [row.idAction, before.get(row.idAction) ?? this.#newRow(row.idAction)]));
    for (const row of rows)
      this.rowOf.get(row.idAction)?.draw(row);
    arrange(this.rows, [...this.rowOf.values()].map(({ element }) => element));
    if (focused && !focused.isConnected)
      this.create.focus();
  }

  /** @param {number} idAction */
  #newRow(idAction) {
    const act = (/** @type {(action: any) => void} */ what) => () => {
      const action = this.app.state.actions.get(idAction);
      if (action)
        what(action);
    };
    const edit = button("Edit", act((action) => this.app.editAction(action)), { writes: true });
    const remove = button("Delete", act((action) => this.app.deleteAction(action)), { writes: true, className: "danger" });
    const cells = TITLES.map((title) => el("td", { role: "cell", "data-title": title }));
    const element = el("tr", { role: "row", "data-action-id": String(idAction) }, ...cells,
      el("td", { role: "cell" }, el("div", { className: "buttons" }, edit, remove)));
    const draw = whenChanged(({ keys, dmId, label, shortLabel, does }) => {
      const origin = idAction === RESERVED_ACTION ? ["reserved"] : dmId ? ["provisioned as ", foreign(dmId)] : ["made by a user"];
      const contents = [[String(idAction)], [foreign(label || "(no label)", label ? "" : "none")], [foreign(shortLabel)],
        [foreign(does)], [String(keys)], [el("span", {}, ...origin)]];
      contents.forEach((content, index) => cells[index].replaceChildren(...content));
      edit.setAttribute("aria-label", `Edit ${label || `action ${idAction}`}`);
      remove.setAttribute("aria-label", `Delete ${label || `action ${idAction}`}`);
    });
    return { element, draw };
  }
}
