// The state of the page: what calls and events say about the phone. This module needs no browser.

import { argumentsText, shortened } from "./events.js";
import { ACTION, KEY, fromWire, isSamePlace, placeName, spotOf } from "./records.js";
import { unitsOf } from "./units.js";

const LOG_SIZE = 1000;

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
    this.actions = new Map(actions.map((wire) => fromWire(ACTION, wire)).map((action) => [action.idAction, action]));
    const before = this.keys;
    this.keys = new Map(keys.map((wire) => fromWire(KEY, wire)).map((key) => [key.idKey, key]));
    for (const key of before.values())
      this.#forgetDisplay(key, this.keys.get(key.idKey));
    this.service = "running";
  }

  /** Displays no longer count when the service has gone.
   * @param {"gone"|"lost"} how */
  leave(how) {
    this.service = how;
    this.displays.clear();
  }

  /** Takes an event of the service.
   * @param {PhoneEvent} event @param {string} time */
  take(event, time) {
    this.note(event, time);
    if (/^(KEY|ACTION|DB)_/.test(event.event))
      this.changeCount += 1;
    const value = /** @type {any} */ (Object.fromEntries(event.arguments.map((argument) => [argument.name, argument.value])));
    switch (event.event) {
      case "KEY_CREATE_NTF":
      case "KEY_MODIFY_NTF":
        this.#forgetDisplay(this.keys.get(value.idKey.idKey), value.idKey);
        this.keys.set(value.idKey.idKey, value.idKey);
        break;
      case "KEY_DELETE_NTF":
        this.#forgetDisplay(this.keys.get(value.idKey));
        this.keys.delete(value.idKey);
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
   * @param {PhoneEvent} event @param {string} time */
  note(event, time) {
    const kept = shortened(event);
    this.log.push({ ...kept, number: ++this.eventCount, time, text: argumentsText(kept) });
    if (this.log.length > LOG_SIZE)
      this.log.shift();
  }

  units() {
    return unitsOf(this.keys.values(), this.actions, this.displays);
  }

  /** @param {Spot} spot @returns {Key|undefined} */
  keyAt(spot) {
    return [...this.keys.values()].find((key) => isSamePlace(spotOf(key), spot));
  }

  /** A display belongs to a key at its place: it goes with the key.
   * @param {Key} [before] @param {Key} [now] */
  #forgetDisplay(before, now) {
    if (before && !(now && isSamePlace(spotOf(before), spotOf(now)) && before.idAction === now.idAction))
      this.displays.delete(placeName(spotOf(before)));
  }

  /** @param {{addr: number, key_num: number}} where @param {Display} what */
  #show(where, what) {
    const place = `${where.addr}/${where.key_num}`;
    this.displays.set(place, { ...this.displays.get(place), ...what });
  }
}
