// The forms for keys and actions.

import { iconNames } from "./desk.js";
import { copyOf, el, one, template } from "./dom.js";
import { MODULE_KEY, RESERVED_ACTION, clip, functionText } from "./records.js";

const NEW = "new";

/** @type {Action} */
const EMPTY_ACTION = { idAction: 0, dmId: "", type: 1, action: "call", webAppName: "", arguments: "", label: "", shortLabel: "" };

/** A key that is not stored yet, at a place.
 * @param {Spot} spot @returns {Key} */
export function newKeyAt({ onModule, container, number, moduleType, address }) {
  const unit = onModule ? { type: MODULE_KEY, aom_type: moduleType, aom_addr: address } : { type: 0, aom_type: 0, aom_addr: 0 };
  return { idKey: -1, dmId: "", idAction: RESERVED_ACTION, container, position: number, icon: "", ...unit };
}

/** A form with the fields of an action in it, filled in.
 * @param {string} id of its template @param {any} record @param {string} yes */
function filled(id, record, yes) {
  const form = template(id);
  one(".action-fields", form).append(copyOf("action-fields"));
  for (const [name, value] of Object.entries(record))
    if (form.elements[name])
      form.elements[name].value = value;
  one(".provisioned", form).hidden = !record.dmId;
  one("[type=submit]", form).textContent = yes;
  return form;
}

/** @param {any} form @param {Action} base @returns {Action} */
function actionIn(form, base) {
  const { label, shortLabel, action, arguments: texts, webAppName, type } = form.elements;
  return { ...base, label: label.value, shortLabel: shortLabel.value, action: action.value, arguments: texts.value,
    webAppName: webAppName.value, type: Number(type.value) };
}

/** @param {any} form @returns {Spot} */
function spotIn({ elements: { unit, container, address, position } }) {
  const onModule = unit.value === "module";
  return { onModule, number: Number(position.value), moduleType: onModule ? 1 : 0,
    address: onModule ? Number(address.value) : 0, container: onModule ? `module${address.value}` : container.value };
}

/** @param {Action} action */
const actionTitle = (action) => action.idAction === RESERVED_ACTION ? "No action (reserved)"
  : `${clip(action.label || action.shortLabel, 60) || "(no label)"} – ${clip(functionText(action), 40)}`;

/** The form for a key, new or stored: its action is selected or created in it. Without a key, the form also asks
 * for the place.
 * @param {State} state @param {Key|null} key
 * @returns {{form: any, value: () => [Key, Action|null]}} */
export function keyForm(state, key) {
  const isNew = !key || key.idKey < 0;
  const form = filled("key-form", { ...EMPTY_ACTION, icon: key?.icon ?? "", dmId: key?.dmId ?? "" }, isNew ? "Create key" : "Save key");
  const { idAction, unit, container, address, position } = form.elements;
  const actions = [...state.actions.values()].sort((left, right) => left.label.localeCompare(right.label));
  idAction.append(...actions.map((action) => el("option", { value: String(action.idAction) }, actionTitle(action))));
  idAction.value = !isNew && state.actions.has(key.idAction) ? String(key.idAction) : NEW;
  one("datalist", form).append(...iconNames().map((value) => el("option", { value })));
  form.onchange = () => {
    one(".action-fields", form).disabled = idAction.value !== NEW;
    unit.disabled = position.disabled = Boolean(key);
    container.disabled = Boolean(key) || unit.value === "module";
    address.disabled = Boolean(key) || unit.value === "set";
  };
  form.onchange();
  return { form, value: () => {
    const newAction = idAction.value === NEW ? actionIn(form, EMPTY_ACTION) : null;
    const bound = newAction ? RESERVED_ACTION : Number(idAction.value);
    return [{ ...(key ?? newKeyAt(spotIn(form))), icon: form.elements.icon.value, idAction: bound }, newAction];
  } };
}

/** The form for an action; without one, for a new action.
 * @param {Action|null} action @returns {{form: any, value: () => Action}} */
export function actionForm(action) {
  const form = filled("action-form", action ?? EMPTY_ACTION, action ? "Save action" : "Create action");
  return { form, value: () => actionIn(form, action ?? EMPTY_ACTION) };
}
