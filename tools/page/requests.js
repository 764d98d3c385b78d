// What a user asks of the service. A request that the service refuses throws a Refusal with the reason.

import { MODULE_KEY, isSamePlace, spotOf } from "./records.js";
import { Refusal, placeTaken, refusalOf } from "./texts.js";

/** Whether two places belong to the same unit, so that keys move between them by position alone.
 * @param {Spot} one @param {Spot} other */
const inSameUnit = (one, other) => one.onModule === other.onModule &&
  (one.onModule ? one.address === other.address : one.container === other.container);

/** The key as it is at another place. Its type follows the place, unless it was on the set already.
 * @param {Key} key @param {Spot} spot @returns {Key} */
export function movedTo(key, spot) {
  const onSet = { type: key.type === MODULE_KEY ? 0 : key.type, aom_type: 0, aom_addr: 0 };
  const onModule = { type: MODULE_KEY, aom_type: spot.moduleType, aom_addr: spot.address };
  return { ...key, container: spot.container, position: spot.number, ...(spot.onModule ? onModule : onSet) };
}

export class Requests {
  /** @param {State} state @param {any} bus @param {() => Promise<void>} refresh */
  constructor(state, bus, refresh) {
    this.state = state;
    this.bus = bus;
    this.refresh = refresh;
    /** @type {Promise<void>} the last move */
    this.lastMove = Promise.resolve();
  }

  /** Asks for a change, and reads the phone again.
   * @param {string} method @param {Key|Action} record @returns {Promise<number>} */
  async change(method, record) {
    const code = await this.bus.change(method, record);
    await this.refresh();
    if (code < 0)
      throw refusalOf(method, record, code, this.state);
    return code;
  }

  /** Creates a key, and its action if that is new.
   * @param {Key} key @param {Action|null} newAction */
  async createKey(key, newAction) {
    await this.refresh();
    const other = this.state.keyAt(spotOf(key));
    if (other)
      throw placeTaken(other);
    await this.#withAction("createProgrammableKey", key, newAction);
  }

  /** Changes the icon and the action of a key. It stays at its place, also if that is new since the key was read.
   * @param {Key} key @param {Action|null} newAction */
  async changeKey(key, newAction) {
    const { icon, idAction } = key;
    await this.#withAction("modifyProgrammableKey", { ...await this.#stored(key), icon, idAction }, newAction);
  }

  /** Moves a key to a place, and the key that is there to the place of the first. One move at a time,
   * because each depends on where the keys are.
   * @param {Key} key @param {Spot} spot */
  move(key, spot) {
    const moved = this.lastMove.then(() => this.#move(key, spot));
    this.lastMove = moved.catch(() => {});
    return moved;
  }

  /** @param {Key} asked @param {Spot} spot */
  async #move(asked, spot) {
    const key = await this.#stored(asked);
    const other = this.state.keyAt(spot);
    const from = spotOf(key);
    if (isSamePlace(from, spot))
      return;
    if (inSameUnit(from, spot)) {
      await this.bus.moveKeys({ [key.idKey]: spot.number, ...(other ? { [other.idKey]: from.number } : {}) });
      await this.refresh();
    } else {
      await this.change("modifyProgrammableKey", movedTo(key, spot));
      if (other)
        await this.change("modifyProgrammableKey", movedTo(other, from));
    }
  }

  /** A key as the service has it now.
   * @param {Key} key */
  async #stored(key) {
    await this.refresh();
    const stored = this.state.keys.get(key.idKey);
    if (!stored)
      throw refusalOf("modifyProgrammableKey", key, 0, this.state);
    return stored;
  }

  /** Asks for a key that is bound to a new action, which is deleted again if the key is refused. After any other
   * error the key may be stored: then the service would delete it with its action.
   * @param {string} method @param {Key} key @param {Action|null} newAction */
  async #withAction(method, key, newAction) {
    if (!newAction) {
      await this.change(method, key);
      return;
    }
    const idAction = await this.change("addAction", newAction);
    try {
      await this.change(method, { ...key, idAction });
    } catch (error) {
      if (error instanceof Refusal)
        await this.bus.change("deleteAction", { ...newAction, idAction });
      throw error;
    }
  }
}
