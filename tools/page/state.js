// The state of the page: what calls and events say about the phone, and what is drawn of it.
// This module needs no browser.

/**
 * @typedef {{idKey: number, dmId: string, idAction: number, container: string, position: number,
 *   icon: string, type: number, aom_type: number, aom_addr: number}} Key
 * @typedef {{idAction: number, dmId: string, type: number, action: string, webAppName: string,
 *   arguments: string, label: string, shortLabel: string}} Action
 * @typedef {{name: string, value: any}} Argument
 * @typedef {{event: string, module: string, arguments: Argument[]}} Event
 * @typedef {Event & {number: number, time: string, text: string}} LogEntry
 * @typedef {{icon?: string, label?: string, labelState?: number}} Display
 * @typedef {{onModule: boolean, container: string, address: number, number: number,
 *   moduleType: number}} Spot
 * @typedef {Spot & {place: string, key: Key|null, label: string, shown: string, display: Display,
 *   isShared: boolean, lacksAction: boolean, mark: string}} Place
 * @typedef {{name: string, onModule: boolean, places: Place[]}} Unit
 * @typedef {{what: string, kind: string, id: number|null, dmId: string, field: string|null,
 *   old: any, new: any, record: number|null, content: any, detail: string, reason: string|null}} PlanRow
 */

export const KEY = "(xsxsisiii)";
export const ACTION = "(xsisssss)";
export const RESERVED_ACTION = -1;
export const MODULE_KEY = 1;
export const LOG_SIZE = 1000;

const KEY_FIELDS = ["idKey", "dmId", "idAction", "container", "position", "icon", "type", "aom_type", "aom_addr"];
const ACTION_FIELDS = ["idAction", "dmId", "type", "action", "webAppName", "arguments", "label", "shortLabel"];
export const KEYS_OF_SET = 12; // in two columns, as on the telephone
export const KEYS_OF_MODULE = 24;
const MOST_PLACES = 240; // A unit has no empty places beyond this number.
const LONGEST_SHOWN = 160;
const LONGEST_LOGGED = 4096;

/** @param {string[]} names @param {any[]} values @returns {any} */
const record = (names, values) => Object.fromEntries(names.map((name, index) => [name, values[index]]));

/** @param {any[]} wire @returns {Key} */
export const keyFrom = (wire) => record(KEY_FIELDS, wire);

/** @param {any[]} wire @returns {Action} */
export const actionFrom = (wire) => record(ACTION_FIELDS, wire);

/** @param {any} key */
export const keyToWire = (key) => KEY_FIELDS.map((name) => key[name]);

/** @param {any} action */
export const actionToWire = (action) => ACTION_FIELDS.map((name) => action[name]);

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

/** The name of a place for people.
 * @param {Spot} spot */
export function placeText(spot) {
  return spot.onModule
    ? `module ${spot.address}, key ${spot.number}`
    : `${clip(spot.container, 40) || "container without a name"}, position ${spot.number}`;
}

// Events

/** A value of an event. Long texts are shortened, because the log keeps many.
 * @param {string} type @param {any} value @returns {any} */
function plain(type, value) {
  if (value && typeof value === "object" && "t" in value)
    return plain(value.t, value.v);
  if (type === KEY || type === ACTION)
    return Object.fromEntries(Object.entries(type === KEY ? keyFrom(value) : actionFrom(value))
      .map(([name, field]) => [name, plain("", field)]));
  return value;
}

/** @param {any} value @returns {any} */
function shortened(value) {
  if (typeof value === "string")
    return clip(value, LONGEST_LOGGED);
  if (value && typeof value === "object" && !Array.isArray(value))
    return Object.fromEntries(Object.entries(value).map(([name, field]) => [name, shortened(field)]));
  return value;
}

/** The event of a signal with the body `sa(svb)`; null for any other body.
 * @param {string} path @param {any[]} body @returns {Event|null} */
export function eventFrom(path, body) {
  const [name, list] = body;
  if (typeof name !== "string" || !Array.isArray(list) || !list.every((item) => Array.isArray(item) && item.length === 3))
    return null;
  return {
    event: name,
    module: path.slice(path.lastIndexOf("/") + 1),
    arguments: list.map(([argument, variant]) => ({ name: argument, value: plain("", variant) })),
  };
}

/** @param {string} text */
const printable = (text) => text.replace(/[\u0000-\u001f\u007f-\u009f]/g, (found) => JSON.stringify(found).slice(1, -1));

/** @param {any} value @returns {string} */
function valueText(value) {
  if (typeof value === "string")
    return `"${printable(value)}"`;
  if (typeof value === "boolean")
    return value ? "yes" : "no";
  if (value === null || typeof value !== "object" || Array.isArray(value))
    return JSON.stringify(value);
  const fields = Object.entries(value).filter(([, field]) => field !== "");
  return `{${fields.map(([name, field]) => `${name}=${valueText(field)}`).join(" ")}}`;
}

/** The arguments of an event in one line, as "progkeysctl monitor" prints them.
 * @param {Event} event */
export const argumentsText = (event) => event.arguments.map(({ name, value }) => `${printable(name)}=${valueText(value)}`).join(" ");

// What is drawn

/** @param {Key|null} key @param {Map<number, Action>} actions @param {Display} display */
function labelOf(key, actions, display) {
  if (!key)
    return "";
  const action = actions.get(key.idAction);
  if (key.type !== MODULE_KEY)
    return action?.label ?? "";
  return display.label ?? action?.shortLabel ?? "";
}

/** @param {Spot} spot @param {Key|null} key @param {Map<number, Action>} actions
 * @param {Map<string, Display>} displays @returns {Place} */
function placeOf(spot, key, actions, displays) {
  const place = placeName(spot);
  const display = (spot.onModule && key && displays.get(place)) || {};
  const label = clip(labelOf(key, actions, display));
  const lacksAction = Boolean(key && !actions.has(key.idAction));
  const shown = label.trim() || (key ? (lacksAction ? "(no action)" : "(no label)") : "");
  return { ...spot, place, key, label, shown, display, isShared: false, lacksAction, mark: "" };
}

/** The numbers that a unit has, used or not.
 * @param {boolean} onModule @param {Key[]} keys */
function numbersOf(onModule, keys) {
  const [first, block] = onModule ? [1, KEYS_OF_MODULE] : [0, KEYS_OF_SET];
  const size = keys.reduce((most, key) => Math.max(most, Math.min(key.position + 1 - first, MOST_PLACES)), 1);
  return Array.from({ length: Math.ceil(size / block) * block }, (_, index) => first + index);
}

/** @param {string} name @param {Key[]} keys @param {Spot} sample @param {Map<number, Action>} actions
 * @param {Map<string, Display>} displays @returns {Unit} */
function unitOf(name, keys, sample, actions, displays) {
  /** @type {Map<number, Key[]>} */
  const used = new Map();
  for (const key of keys)
    used.set(key.position, [...(used.get(key.position) ?? []), key]);
  const numbers = new Set([...numbersOf(sample.onModule, keys), ...used.keys()]);
  const places = [...numbers].sort((left, right) => left - right).flatMap((number) => {
    const here = used.get(number) ?? [null];
    return here.map((key) => {
      const spot = key ? spotOf(key) : { ...sample, number };
      return { ...placeOf(spot, key, actions, displays), isShared: here.length > 1 };
    });
  });
  return { name, onModule: sample.onModule, places };
}

/** The units of the phone with their places: the containers of the set, then the modules.
 * @param {Iterable<Key>} keys @param {Map<number, Action>} actions @param {Map<string, Display>} displays
 * @returns {Unit[]} */
export function unitsOf(keys, actions, displays = new Map()) {
  /** @type {Map<string, Key[]>} */
  const containers = new Map();
  /** @type {Map<number, Key[]>} */
  const modules = new Map();
  for (const key of keys) {
    /** @type {Map<string|number, Key[]>} */
    const units = key.type === MODULE_KEY ? modules : containers;
    const name = key.type === MODULE_KEY ? key.aom_addr : key.container;
    const unit = units.get(name);
    unit ? unit.push(key) : units.set(name, [key]);
  }
  if (containers.size === 0)
    containers.set("home", []);
  const spot = { onModule: false, container: "", address: 0, number: 0, moduleType: 0 };
  const sets = [...containers].sort(([left], [right]) => left.localeCompare(right))
    .map(([name, held]) => unitOf(name, held, { ...spot, container: name }, actions, displays));
  const others = [...modules].sort(([left], [right]) => left - right)
    .map(([address, held]) => unitOf(`Module ${address}`, held, spotOf(held[0]), actions, displays));
  return [...sets, ...others];
}

/** The accessible name of a place: it contains the label.
 * @param {Place} place */
export function spokenName(place) {
  if (!place.key)
    return `Empty: ${placeText(place)}`;
  const notes = [place.key.dmId && "provisioned", place.lacksAction && "its action is missing",
    place.isShared && "shares its place", place.mark, place.display.icon && `icon state ${place.display.icon}`,
    place.display.labelState && `label state ${place.display.labelState}`].filter(Boolean);
  return [`${place.shown}: ${placeText(place)}`, ...notes].join(", ");
}

/** What the page knows about the phone. */
export class State {
  constructor() {
    /** @type {"waiting"|"running"|"gone"|"lost"} */
    this.service = "waiting";
    /** @type {Map<number, Key>} */
    this.keys = new Map();
    /** @type {Map<number, Action>} */
    this.actions = new Map();
    /** @type {Map<string, Display>} what the service has sent to the modules */
    this.displays = new Map();
    /** @type {number|null} */
    this.limit = null;
    this.mayWrite = true;
    /** @type {LogEntry[]} */
    this.log = [];
    /** @type {string[]} places that have been pressed since the last drawing */
    this.pressed = [];
    this.eventCount = 0;
    this.changeCount = 0; // events that changed a key or an action
  }

  /** Takes all keys and actions, as the service has just returned them.
   * @param {any[][]} keys @param {any[][]} actions */
  read(keys, actions) {
    this.actions = new Map(actions.map(actionFrom).map((action) => [action.idAction, action]));
    const before = this.keys;
    this.keys = new Map(keys.map(keyFrom).map((key) => [key.idKey, key]));
    for (const key of before.values())
      this.#forgetDisplay(key, this.keys.get(key.idKey));
    this.service = "running";
  }

  /** Nothing that was read counts any longer: the service has gone. */
  leave() {
    this.service = "gone";
    this.displays.clear();
  }

  /** Takes an event of the service.
   * @param {Event} event @param {string} time */
  take(event, time) {
    this.note(event, time);
    if (/^(KEY|ACTION|DB)_/.test(event.event))
      this.changeCount += 1;
    const value = /** @type {any} */ (Object.fromEntries(event.arguments.map((argument) => [argument.name, argument.value])));
    switch (event.event) {
      case "KEY_CREATE_NTF":
      case "KEY_MODIFY_NTF":
        this.#setKey(value.idKey);
        break;
      case "KEY_DELETE_NTF":
        this.#setKey(null, value.idKey);
        break;
      case "ACTION_CREATE_NTF":
      case "ACTION_MODIFY_NTF":
        this.actions.set(value.idAction.idAction, value.idAction);
        break;
      case "ACTION_DELETE_NTF":
        this.actions.delete(value.idAction);
        break;
      case "DB_RESET_NTF":
        this.displays.clear();
        break;
      case "AOM_SET_ICON_PROPERTY_REC":
        this.#show(value, { icon: value.icon_x || value.icon_y ? `${value.icon_x}, ${value.icon_y}` : "" });
        break;
      case "AOM_SET_LABEL_PROPERTY_REC":
        this.#show(value, { label: value.label_str, labelState: value.label_state });
        break;
      case "AOMKEY_PRESS_NTF":
        this.pressed.push(placeName({ ...spotOf(value.key), onModule: true }));
        break;
    }
  }

  /** Puts an event into the log.
   * @param {Event} event @param {string} time */
  note(event, time) {
    this.eventCount += 1;
    const kept = { ...event, arguments: event.arguments.map(({ name, value }) => ({ name, value: shortened(value) })) };
    this.log.push({ ...kept, number: this.eventCount, time, text: argumentsText(kept) });
    if (this.log.length > LOG_SIZE)
      this.log.splice(0, this.log.length - LOG_SIZE);
  }

  /** The entries of the log that contain a text.
   * @param {string} filter @param {LogEntry[]} log @returns {LogEntry[]} */
  logWith(filter, log = this.log) {
    const wanted = filter.trim().toLowerCase();
    return wanted ? log.filter((entry) => `${entry.event} ${entry.text}`.toLowerCase().includes(wanted)) : log;
  }

  units() {
    return unitsOf(this.keys.values(), this.actions, this.displays);
  }

  /** @param {number} idAction @returns {Key[]} */
  keysOf(idAction) {
    return [...this.keys.values()].filter((key) => key.idAction === idAction);
  }

  /** @param {Spot} spot @returns {Key|undefined} */
  keyAt(spot) {
    return [...this.keys.values()].find((key) => placeName(spotOf(key)) === placeName(spot) &&
      (key.type === MODULE_KEY) === spot.onModule);
  }

  setKeyCount() {
    return [...this.keys.values()].filter((key) => key.type === 0).length;
  }

  /** @param {Key|null} key @param {number} idKey */
  #setKey(key, idKey = key?.idKey ?? 0) {
    const before = this.keys.get(idKey);
    key ? this.keys.set(idKey, key) : this.keys.delete(idKey);
    if (before)
      this.#forgetDisplay(before, key ?? undefined);
  }

  /** A display belongs to a key at its place: it goes with the key.
   * @param {Key} before @param {Key|undefined} now */
  #forgetDisplay(before, now) {
    const place = placeName(spotOf(before));
    if (!now || placeName(spotOf(now)) !== place || now.type !== before.type || now.idAction !== before.idAction)
      this.displays.delete(place);
  }

  /** @param {{addr: number, key_num: number}} where @param {Display} what */
  #show(where, what) {
    const place = `${where.addr}/${where.key_num}`;
    this.displays.set(place, { ...this.displays.get(place), ...what });
  }
}

// The plan of a rollout

/** The actions that the phone has after the merge. New ones have negative ids.
 * @param {State} state @param {PlanRow[]} rows @returns {Map<number, Action>} */
function plannedActions(state, rows) {
  const actions = new Map([...state.actions].map(([id, action]) => [id, { ...action }]));
  rows.filter((row) => row.kind === "action").forEach((row, index) => {
    const stored = /** @type {any} */ (actions.get(row.id ?? NaN));
    if (row.what === "added" && row.content)
      actions.set(-1000 - index, { ...row.content, idAction: -1000 - index });
    if (row.what === "changed" && stored && row.field)
      stored[row.field] = row.new;
  });
  return actions;
}

/** @param {Map<number, Action>} actions @param {string} dmId */
const withDmId = (actions, dmId) => [...actions.values()].find((action) => action.dmId === dmId)?.idAction ?? RESERVED_ACTION;

/** The keys that the phone has after the merge, and what happens to each.
 * @param {State} state @param {PlanRow[]} rows @param {Map<number, Action>} actions */
function plannedKeys(state, rows, actions) {
  const keys = new Map([...state.keys].map(([id, key]) => [id, { ...key }]));
  /** @type {Map<number, string>} */
  const marks = new Map();
  rows.filter((row) => row.kind === "key").forEach((row, index) => {
    const stored = /** @type {any} */ (keys.get(row.id ?? NaN));
    if (row.what === "added" && row.content) {
      const idKey = -1000 - index;
      keys.set(idKey, { ...row.content, idKey, idAction: withDmId(actions, row.content.dmId) });
      marks.set(idKey, "added");
    } else if (stored) {
      if (row.what === "changed" && row.field)
        stored[row.field] = row.new;
      if (row.what !== "kept")
        marks.set(stored.idKey, row.what);
    }
  });
  return { keys, marks };
}

/** @param {Unit[]} units @param {(key: Key) => string} markOf */
function marked(units, markOf) {
  for (const unit of units)
    for (const place of unit.places)
      place.mark = place.key ? markOf(place.key) : "";
  return units;
}

/** How many actions and keys a plan adds, changes and so on.
 * @param {PlanRow[]} rows */
export function countsOf(rows) {
  /** @type {Record<string, Record<string, number>>} */
  const counts = { action: {}, key: {} };
  const seen = new Set();
  for (const row of rows) {
    const what = `${row.kind} ${row.what} ${row.id ?? ""} ${row.record ?? row.dmId}`;
    if (row.id === null || !seen.has(what))
      counts[row.kind][row.what] = (counts[row.kind][row.what] ?? 0) + 1;
    seen.add(what);
  }
  return counts;
}

/** The phone before and after the merge of a rollout, from the rows of "progkeysctl defaults plan --all".
 * @param {State} state @param {PlanRow[]} rows */
export function planOf(state, rows) {
  const actions = plannedActions(state, rows);
  const { keys, marks } = plannedKeys(state, rows, actions);
  const changed = new Set(rows.filter((row) => row.kind === "action" && row.what === "changed").map((row) => row.id));
  const withdrawn = new Set(rows.filter((row) => row.kind === "action" && row.what === "withdrawn").map((row) => row.id));
  /** @param {Key} key */
  const markOf = (key) => marks.get(key.idKey) ??
    (changed.has(key.idAction) ? "changed" : withdrawn.has(key.idAction) ? "withdrawn" : "");
  const isGone = (/** @type {Key} */ key) => ["removed", "withdrawn", "dropped"].includes(marks.get(key.idKey) ?? "");
  const after = [...keys.values()].filter((key) => !isGone(key));
  return {
    before: marked(unitsOf(state.keys.values(), state.actions), markOf),
    after: marked(unitsOf(after, actions), markOf),
    counts: countsOf(rows),
    dropped: rows.filter((row) => row.what === "dropped" || row.what === "refused"),
  };
}
