// What is drawn of the phone: its units with their places.

import { MODULE_KEY, clip, placeName, placeText, spotOf } from "./records.js";

export const KEYS_OF_SET = 12; // in two columns, as on the telephone
export const KEYS_OF_MODULE = 24;
const MOST_PLACES = 240; // A unit has no empty places beyond this number.

/** @param {Spot} spot @param {Key|null} key @param {Map<number, Action>} actions @param {Display} display */
function contentOf(spot, key, actions, display) {
  const action = key && actions.get(key.idAction);
  const text = spot.onModule ? display.label ?? action?.shortLabel : action?.label;
  const label = clip(text ?? "");
  const lacksAction = Boolean(key && !action);
  return { label, lacksAction, shown: label.trim() || (!key ? "" : lacksAction ? "(no action)" : "(no label)") };
}

/** The numbers that a unit has, used or not.
 * @param {boolean} onModule @param {Key[]} keys */
function numbersOf(onModule, keys) {
  const [first, block] = onModule ? [1, KEYS_OF_MODULE] : [0, KEYS_OF_SET];
  const size = keys.reduce((most, key) => Math.max(most, Math.min(key.position + 1 - first, MOST_PLACES)), 1);
  return Array.from({ length: Math.ceil(size / block) * block }, (_, index) => first + index);
}

/** @template Name, Item @param {Iterable<Item>} items @param {(item: Item) => Name} nameOf @returns {Map<Name, Item[]>} */
function grouped(items, nameOf) {
  const groups = new Map();
  for (const item of items) {
    const group = groups.get(nameOf(item));
    group ? group.push(item) : groups.set(nameOf(item), [item]);
  }
  return groups;
}

/** @param {string} name @param {Key[]} keys @param {Spot} sample @param {Map<number, Action>} actions
 * @param {Map<string, Display>} displays @returns {Unit} */
function unitOf(name, keys, sample, actions, displays) {
  const used = grouped(keys, (key) => key.position);
  const numbers = new Set([...numbersOf(sample.onModule, keys), ...used.keys()]);
  const places = [...numbers].sort((left, right) => left - right).flatMap((number) => {
    const here = used.get(number) ?? [null];
    return here.map((key, index) => {
      const spot = key ? spotOf(key) : { ...sample, number };
      const place = placeName(spot);
      const display = (spot.onModule && key && displays.get(place)) || {};
      return { ...spot, place, slot: `${number} ${index}`, key, display, isShared: here.length > 1, mark: "",
        ...contentOf(spot, key, actions, display) };
    });
  });
  return { name, onModule: sample.onModule, places };
}

/** The units of the phone with their places: the containers of the set, then the modules.
 * @param {Iterable<Key>} keys @param {Map<number, Action>} actions @param {Map<string, Display>} displays
 * @returns {Unit[]} */
export function unitsOf(keys, actions, displays = new Map()) {
  const all = [...keys];
  const containers = grouped(all.filter((key) => key.type !== MODULE_KEY), (key) => key.container);
  const modules = grouped(all.filter((key) => key.type === MODULE_KEY), (key) => key.aom_addr);
  if (containers.size === 0)
    containers.set("home", []);
  const spot = { onModule: false, address: 0, number: 0, moduleType: 0 };
  return [
    ...[...containers].sort(([left], [right]) => left.localeCompare(right))
      .map(([container, held]) => unitOf(container, held, { ...spot, container }, actions, displays)),
    ...[...modules].sort(([left], [right]) => left - right)
      .map(([address, held]) => unitOf(`Module ${address}`, held, spotOf(held[0]), actions, displays)),
  ];
}

/** The accessible name of a place: it contains the label.
 * @param {Place} place */
export function spokenName({ key, shown, display, lacksAction, isShared, mark, ...spot }) {
  if (!key)
    return `Empty: ${placeText(spot)}`;
  const notes = [key.dmId && "provisioned", lacksAction && "its action is missing",
    isShared && "shares its place with another key", mark, display.icon && `icon state ${display.icon}`,
    display.labelState && `label state ${display.labelState}`].filter(Boolean);
  return [`${shown}: ${placeText(spot)}`, ...notes].join(", ");
}
