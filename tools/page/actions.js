// The view of all actions.

import { drawList, foreign, one, template } from "./dom.js";
import { RESERVED_ACTION, clip, functionText } from "./records.js";

export class ActionsView {
  /** @param {App} app */
  constructor(app) {
    this.app = app;
    this.element = template("actions-view");
    this.rows = one("tbody", this.element);
    this.create = one(".create", this.element);
    this.create.onclick = () => app.editAction(null);
  }

  draw() {
    const { state } = this.app;
    const hadFocus = this.rows.contains(document.activeElement);
    /** @type {Map<number, number>} */
    const counts = new Map();
    for (const { idAction } of state.keys.values())
      counts.set(idAction, (counts.get(idAction) ?? 0) + 1);
    const rows = [...state.actions.values()].map((action) => ({ action, keys: counts.get(action.idAction) ?? 0 }));
    drawList(this.rows, rows, ({ action }) => action.idAction, () => this.#newRow(), drawRow);
    if (hadFocus && !this.rows.contains(document.activeElement))
      this.create.focus();
  }

  #newRow() {
    const row = template("action-row");
    one(".edit", row).onclick = () => this.app.editAction(row.item.action);
    one(".delete", row).onclick = () => this.app.deleteAction(row.item.action);
    return row;
  }
}

/** @param {any} row @param {{action: Action, keys: number}} item */
function drawRow(row, { action, keys }) {
  const { idAction, dmId } = action;
  const label = clip(action.label);
  const origin = idAction === RESERVED_ACTION ? "reserved" : dmId ? `provisioned as ${clip(dmId, 40)}` : "created by a user";
  const contents = [idAction, foreign(label || "(no label)", label ? "" : "none"), foreign(clip(action.shortLabel, 40)),
    foreign(functionText(action)), keys, foreign(origin)];
  contents.forEach((content, index) => row.cells[index].replaceChildren(content));
  row.dataset.actionId = idAction;
  one(".edit", row).setAttribute("aria-label", `Edit ${label || `action ${idAction}`}`);
  one(".delete", row).setAttribute("aria-label", `Delete ${label || `action ${idAction}`}`);
}
