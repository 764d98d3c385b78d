// The forms for keys and actions.

import { button, el } from "./dom.js";
import { ICON_NAMES } from "./icons.js";
import { RESERVED_ACTION, clip, placeText, spotOf } from "./state.js";

/** @typedef {import("./state.js").Key} Key @typedef {import("./state.js").Action} Action
 * @typedef {import("./state.js").Spot} Spot */

const NEW = "new";

/** @type {Action} */
const EMPTY_ACTION = { idAction: 0, dmId: "", type: 1, action: "call", webAppName: "", arguments: "", label: "", shortLabel: "" };

/** @param {string} label @param {Record<string, any>} properties @param {string} [hint] */
function field(label, properties, hint) {
  const input = el("input", { autocomplete: "off", dir: "auto", ...properties });
  return { input, element: el("label", { className: "field" }, el("span", {}, label), input, hint ? el("small", {}, hint) : null) };
}

/** The fields of an action.
 * @param {Action} action @returns {{element: any, value: () => Action}} */
function actionFields(action) {
  const label = field("Label", { value: action.label, name: "label" }, "shown on the set");
  const short = field("Short label", { value: action.shortLabel, name: "shortLabel" }, "shown on add-on modules");
  const what = field("Action", { value: action.action, name: "action" }, "such as call or open");
  const values = field("Arguments", { value: action.arguments, name: "arguments" }, "such as the number to call");
  const app = field("Web application", { value: action.webAppName, name: "webAppName" });
  const type = field("Type", { value: String(action.type), name: "type", type: "number", step: "1", required: true,
    min: "-2147483648", max: "2147483647" });
  return {
    element: el("div", { className: "fields" }, ...[label, short, what, values, app, type].map(({ element }) => element)),
    value: () => ({ ...action, label: label.input.value, shortLabel: short.input.value, action: what.input.value,
      arguments: values.input.value, webAppName: app.input.value, type: Number(type.input.value) }),
  };
}

/** @param {Action} action */
const actionTitle = (action) => action.idAction === RESERVED_ACTION ? "No action (reserved)"
  : `${clip(action.label || action.shortLabel, 60) || "(no label)"} – ${clip(`${action.action} ${action.arguments}`, 40)}`;

/** @param {any} body @param {() => Promise<void>} submit @param {string} yes @param {() => void} cancel
 * @param {(text: string) => void} refuse */
function formOf(body, submit, yes, cancel, refuse) {
  const save = el("button", { type: "submit", className: "primary", "data-writes": "" }, yes);
  const form = el("form", { className: "form" }, body, el("div", { className: "buttons" }, save, button("Cancel", cancel)));
  let isBusy = false;
  form.addEventListener("submit", async (/** @type {SubmitEvent} */ event) => {
    event.preventDefault();
    if (isBusy)
      return;
    isBusy = true;
    try {
      await submit();
    } catch (error) {
      refuse(/** @type {any} */ (error));
    } finally {
      isBusy = false;
    }
  });
  return form;
}

/** The form for a key, new at a place or stored: its action is chosen or created in it.
 * @param {{state: import("./state.js").State, key: Key, save: (key: Key, newAction: Action|null) => Promise<void>,
 *   cancel: () => void, refuse: (error: any) => void}} options */
export function keyForm({ state, key, save, cancel, refuse }) {
  const isNew = key.idKey < 0;
  const actions = [...state.actions.values()].sort((one, other) => one.label.localeCompare(other.label));
  const choice = el("select", { name: "idAction" }, el("option", { value: NEW }, "New action…"),
    ...actions.map((action) => el("option", { value: String(action.idAction) }, actionTitle(action))));
  choice.value = isNew ? NEW : String(key.idAction);
  if (choice.selectedIndex < 0)
    choice.value = NEW;
  const created = actionFields(EMPTY_ACTION);
  const icons = el("datalist", { id: "icon-names" }, ...ICON_NAMES.map((name) => el("option", { value: name })));
  const icon = field("Icon", { value: key.icon, name: "icon", list: "icon-names" }, `such as ${ICON_NAMES.slice(0, 3).join(", ")}`);
  const show = () => created.element.toggleAttribute("hidden", choice.value !== NEW);
  choice.addEventListener("change", show);
  show();
  const body = el("div", {},
    el("label", { className: "field" }, el("span", {}, "Action"), choice), created.element, icon.element, icons,
    key.dmId ? el("p", { className: "hint" }, "This key is provisioned. The next start of the service restores it.") : null);
  return formOf(body, () => {
    const isCreated = choice.value === NEW;
    const value = { ...key, icon: icon.input.value, idAction: isCreated ? RESERVED_ACTION : Number(choice.value) };
    return save(value, isCreated ? created.value() : null);
  }, isNew ? "Create key" : "Save key", cancel, refuse);
}

/** The form for an action; without one, for a new action.
 * @param {{action: Action|null, save: (action: Action) => Promise<void>, cancel: () => void,
 *   refuse: (error: any) => void}} options */
export function actionForm({ action, save, cancel, refuse }) {
  const fields = actionFields(action ?? EMPTY_ACTION);
  const body = el("div", {}, fields.element,
    action?.dmId ? el("p", { className: "hint" }, "This action is provisioned. The next start of the service restores it.") : null);
  return formOf(body, () => save(fields.value()), action ? "Save action" : "Create action", cancel, refuse);
}

/** The form that asks for a place on any unit.
 * @param {{go: (spot: Spot) => void, cancel: () => void}} options */
export function spotForm({ go, cancel }) {
  const where = el("select", { name: "unit" }, el("option", { value: "set" }, "On the set"), el("option", { value: "module" }, "On an add-on module"));
  const container = field("Container", { value: "home", name: "container" });
  const number = (/** @type {string} */ label, /** @type {string} */ name, /** @type {string} */ value) =>
    field(label, { type: "number", name, value, required: true, step: "1", min: "-2147483648", max: "2147483647" });
  const address = number("Address of the module", "address", "1");
  const position = number("Position or key number", "position", "0");
  const show = () => {
    address.element.hidden = where.value === "set";
    container.element.hidden = where.value === "module";
  };
  where.addEventListener("change", show);
  show();
  const body = el("div", { className: "fields" }, el("label", { className: "field" }, el("span", {}, "Place"), where),
    container.element, address.element, position.element);
  return formOf(body, async () => {
    const onModule = where.value === "module";
    go({ onModule, number: Number(position.input.value), moduleType: onModule ? 1 : 0,
      address: onModule ? Number(address.input.value) : 0,
      container: onModule ? `module${address.input.value}` : container.input.value });
  }, "Continue", cancel, () => {});
}

/** A key that is not stored yet, at a place.
 * @param {Spot} spot @returns {Key} */
export function newKeyAt(spot) {
  return { idKey: -1, dmId: "", idAction: RESERVED_ACTION, container: spot.container, position: spot.number, icon: "",
    type: spot.onModule ? 1 : 0, aom_type: spot.onModule ? spot.moduleType : 0, aom_addr: spot.onModule ? spot.address : 0 };
}

/** The names of keys, for a question before they are deleted.
 * @param {Key[]} keys */
export const keyNames = (keys) => keys.map((key) => `key ${key.idKey} (${placeText(spotOf(key))})`).join(", ");
