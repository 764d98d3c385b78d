// What a user asks of the service. A request that was not carried out throws a Refusal with the reason.

import * as texts from "./texts.js";
import { placeName, spotOf } from "./state.js";

/** @typedef {import("./state.js").Key} Key @typedef {import("./state.js").Action} Action
 * @typedef {import("./state.js").Spot} Spot */

/** Whether two places belong to the same unit, so that keys move between them by position alone.
 * @param {Spot} one @param {Spot} other */
const inSameUnit = (one, other) => one.onModule === other.onModule &&
  (one.onModule ? one.address === other.address : one.container === other.container);

/** The key as it is at another place. Its type follows the place, unless it was on the set already.
 * @param {Key} key @param {Spot} spot @returns {Key} */
export function movedTo(key, spot) {
  const onSet = { type: key.type === 1 ? 0 : key.type, aom_type: 0, aom_addr: 0 };
  const onModule = { type: 1, aom_type: spot.moduleType, aom_addr: spot.address };
  return { ...key, container: spot.container, position: spot.number, ...(spot.onModule ? onModule : onSet) };
}

export class Requests {
  /** @param {import("./state.js").State} state @param {any} bus @param {() => Promise<void>} refresh */
  constructor(state, bus, refresh) {
    this.state = state;
    this.bus = bus;
    this.refresh = refresh;
    /** @type {Promise<void>} the last move */
    this.lastMove = Promise.resolve();
  }

  /** Creates a key, and its action if that is new.
   * @param {Key} key @param {Action|null} newAction @returns {Promise<number>} */
  async createKey(key, newAction) {
    await this.refresh();
    const other = this.state.keyAt(spotOf(key));
    if (other)
      throw texts.placeTaken(other);
    return this.#withAction(key, newAction, async (bound) => {
      const id = await this.bus.createKey(bound);
      if (id < 0) {
        await this.refresh();
        throw texts.keyNotCreated(id, bound, this.state.actions.has(bound.idAction), this.state.limit);
      }
      return id;
    });
  }

  /** Changes the icon and the action of a key. It stays at its place, also if that is new since the key was read.
   * @param {Key} key @param {Action|null} newAction */
  async changeKey(key, newAction) {
    const { icon, idAction } = key;
    const changed = { ...await this.#stored(key), icon, idAction };
    await this.#withAction(changed, newAction, (bound) => this.#modify(bound));
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
    if (placeName(from) === placeName(spot) && from.onModule === spot.onModule)
      return;
    if (inSameUnit(from, spot)) {
      await this.bus.moveKeys({ [key.idKey]: spot.number, ...(other ? { [other.idKey]: from.number } : {}) });
    } else {
      await this.#modify(movedTo(key, spot));
      if (other)
        await this.#modify(movedTo(other, from));
    }
    await this.refresh();
  }

  /** @param {Key} key */
  async deleteKey(key) {
    const code = await this.bus.deleteKey(key.idKey);
    await this.refresh();
    if (code < 0)
      throw texts.keyNotDeleted(key, this.state.keys.has(key.idKey));
  }

  /** @param {Action} action @returns {Promise<number>} */
  async addAction(action) {
    const id = await this.bus.addAction(action);
    if (id < 0)
      throw texts.actionNotCreated();
    return id;
  }

  /** @param {Action} action */
  async changeAction(action) {
    const code = await this.bus.modifyAction(action);
    await this.refresh();
    if (code < 0)
      throw texts.actionNotChanged(action.idAction, this.state.actions.has(action.idAction));
  }

  /** @param {Action} action */
  async deleteAction(action) {
    const code = await this.bus.deleteAction(action.idAction);
    await this.refresh();
    if (code < 0)
      throw texts.actionNotDeleted(action, this.state.actions.has(action.idAction));
  }

  /** A key as the service has it now.
   * @param {Key} key */
  async #stored(key) {
    await this.refresh();
    const stored = this.state.keys.get(key.idKey);
    if (!stored)
      throw texts.keyNotChanged(key, true, false);
    return stored;
  }

  /** @param {Key} key */
  async #modify(key) {
    const code = await this.bus.modifyKey(key);
    if (code < 0) {
      await this.refresh();
      throw texts.keyNotChanged(key, this.state.actions.has(key.idAction), this.state.keys.has(key.idKey));
    }
  }

  /** Binds a key to a new action, which is deleted again if the key is refused.
   * @template T @param {Key} key @param {Action|null} newAction @param {(bound: Key) => Promise<T>} ask */
  async #withAction(key, newAction, ask) {
    if (!newAction)
      return ask(key);
    const idAction = await this.addAction(newAction);
    try {
      return await ask({ ...key, idAction });
    } catch (error) {
      await this.bus.deleteAction(idAction);
      throw error;
    }
  }
}
