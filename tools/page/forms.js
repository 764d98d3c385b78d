// The forms for keys, actions and places.

import { iconNames } from "./desk.js";
import { copyOf, el, one, template } from "./dom.js";
import { MODULE_KEY, RESERVED_ACTION, clip, functionText } from "./records.js";

const NEW = "new";

/** @type {Action} */
const EMPTY_ACTION = { idAction: 0, dmId: "", type: 1, action: "call", webAppName: "", arguments: "", label: "", shortLabel: "" };

/** @param {HTMLFormElement} form @returns {any} what is entered */
const entered = (form) => Object.fromEntries(new FormData(form));

/** Fills a form in, and sends it once at a time.
 * @param {any} form @param {any} record @param {string} yes
 * @param {{save: () => Promise<void>, cancel: () => void, refuse: (error: any) => void}} handlers */
function prepared(form, record, yes, { save, cancel, refuse }) {
  for (const input of form.querySelectorAll("input"))
    input.value = record[input.name];
  one(".provisioned", form).hidden = !record.dmId;
  one("[type=submit]", form).textContent = yes;
  one(".cancel", form).onclick = cancel;
  let isBusy = false;
  form.onsubmit = async (/** @type {SubmitEvent} */ event) => {
    event.preventDefault();
    if (isBusy)
      return;
    isBusy = true;
    await save().catch(refuse);
    isBusy = false;
  };
  return form;
}

/** @param {Action} base @param {any} values @returns {Action} */
const actionWith = (base, { label, shortLabel, action, arguments: texts, webAppName, type }) =>
  ({ ...base, label, shortLabel, action, arguments: texts, webAppName, type: Number(type) });

/** @param {Action} action */
const actionTitle = (action) => action.idAction === RESERVED_ACTION ? "No action (reserved)"
  : `${clip(action.label || action.shortLabel, 60) || "(no label)"} – ${clip(functionText(action), 40)}`;

/** The form for a key, new or stored: its action is selected or created in it.
 * @param {State} state @param {Key} key
 * @param {{save: (key: Key, newAction: Action|null) => Promise<void>, cancel: () => void, refuse: (error: any) => void}} handlers */
export function keyForm(state, key, { save, cancel, refuse }) {
  const isNew = key.idKey < 0;
  const form = template("key-form");
  const { idAction } = form.elements;
  const fields = one("fieldset", form);
  fields.append(el("legend", {}, "New action"), copyOf("action-fields"));
  one("datalist", form).append(...iconNames().map((value) => el("option", { value })));
  const actions = [...state.actions.values()].sort((left, right) => left.label.localeCompare(right.label));
  idAction.append(...actions.map((action) => el("option", { value: String(action.idAction) }, actionTitle(action))));
  idAction.value = !isNew && state.actions.has(key.idAction) ? String(key.idAction) : NEW;
  idAction.onchange = () => { fields.disabled = idAction.value !== NEW; };
  idAction.onchange();
  return prepared(form, { ...EMPTY_ACTION, icon: key.icon, dmId: key.dmId }, isNew ? "Create key" : "Save key", { cancel, refuse, save: () => {
    const values = entered(form);
    const newAction = values.idAction === NEW ? actionWith(EMPTY_ACTION, values) : null;
    return save({ ...key, icon: values.icon, idAction: newAction ? RESERVED_ACTION : Number(values.idAction) }, newAction);
  } });
}

/** The form for an action; without one, for a new action.
 * @param {Action|null} action
 * @param {{save: (action: Action) => Promise<void>, cancel: () => void, refuse: (error: any) => void}} handlers */
export function actionForm(action, { save, cancel, refuse }) {
  const form = template("action-form");
  one("fieldset", form).append(copyOf("action-fields"));
  const base = action ?? EMPTY_ACTION;
  return prepared(form, base, action ? "Save action" : "Create action",
    { cancel, refuse, save: () => save(actionWith(base, entered(form))) });
}

/** The form that asks for a place on any unit.
 * @param {(spot: Spot) => void} go @param {() => void} cancel */
export function placeForm(go, cancel) {
  const form = template("place-form");
  const { unit, container, address } = form.elements;
  unit.onchange = () => {
    container.disabled = unit.value === "module";
    address.disabled = unit.value === "set";
  };
  unit.onchange();
  one(".cancel", form).onclick = cancel;
  form.onsubmit = () => {
    const onModule = unit.value === "module";
    go({ onModule, number: Number(form.elements.position.value), moduleType: onModule ? 1 : 0,
      address: onModule ? Number(address.value) : 0, container: onModule ? `module${address.value}` : container.value });
  };
  return form;
}

/** A key that is not stored yet, at a place.
 * @param {Spot} spot @returns {Key} */
export function newKeyAt(spot) {
  return { idKey: -1, dmId: "", idAction: RESERVED_ACTION, container: spot.container, position: spot.number, icon: "",
    type: spot.onModule ? MODULE_KEY : 0, aom_type: spot.onModule ? spot.moduleType : 0, aom_addr: spot.onModule ? spot.address : 0 };
}
