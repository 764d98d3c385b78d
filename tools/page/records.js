// Keys and actions: their fields, their form on the bus, and the places of keys.

export const KEY = "(xsxsisiii)";
export const ACTION = "(xsisssss)";
export const RESERVED_ACTION = -1;
export const MODULE_KEY = 1;

/** @type {Record<string, string[]>} */
const FIELDS = {
  [KEY]: ["idKey", "dmId", "idAction", "container", "position", "icon", "type", "aom_type", "aom_addr"],
  [ACTION]: ["idAction", "dmId", "type", "action", "webAppName", "arguments", "label", "shortLabel"],
};
const LONGEST_SHOWN = 160;

/** A value as the page uses it: of a record, an object with the names of its fields.
 * @param {string} type @param {any} wire @returns {any} */
export const fromWire = (type, wire) => Object.hasOwn(FIELDS, type)
  ? Object.fromEntries(FIELDS[type].map((name, index) => [name, wire[index]]))
  : wire;

/** @param {string} type @param {any} record */
export const toWire = (type, record) => FIELDS[type].map((name) => record[name]);

/** The beginning of a text, by whole characters.
 * @param {string} text @param {number} most */
export function clip(text, most = LONGEST_SHOWN) {
  return text.length <= most ? text : `${Array.from(text.slice(0, most + 1)).slice(0, -1).join("")}…`;
}

/** @param {Key} key @returns {Spot} */
export function spotOf(key) {
  const onModule = key.type === MODULE_KEY;
  return { onModule, container: key.container, address: key.aom_addr, number: key.position, moduleType: key.aom_type };
}

/** The name of a place in `data-place`: CONTAINER/POSITION, or ADDRESS/NUMBER on a module.
 * @param {Spot} spot */
export const placeName = (spot) => `${spot.onModule ? spot.address : spot.container}/${spot.number}`;

/** @param {Spot} one @param {Spot} other */
export const isSamePlace = (one, other) => one.onModule === other.onModule && placeName(one) === placeName(other);

/** The name of a place for people.
 * @param {Spot} spot */
export function placeText(spot) {
  return spot.onModule
    ? `module ${spot.address}, key ${spot.number}`
    : `${clip(spot.container, 40) || "container without a name"}, position ${spot.number}`;
}

/** What an action does, in a line.
 * @param {Action|undefined} action */
export const functionText = (action) =>
  clip([action?.action, action?.webAppName, action?.arguments].filter(Boolean).join(" "));
