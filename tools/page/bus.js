// The phone on the bus, through Cockpit. Every method has an explicit signature, so that no introspection
// is needed.

import { ACTION, KEY, actionToWire, eventFrom, keyToWire } from "./state.js";

/** @typedef {import("./state.js").Key} Key @typedef {import("./state.js").Action} Action
 * @typedef {import("./state.js").Event} Event */

const SERVICE = "com.velmora.Tessaro.ZelProgrammableKeys";
const PATH = "/com/velmora/Tessaro/ZelProgrammableKeys";
const INTERFACE = "com.velmora.Tessaro.ZELInterface";
const EVENTS = { interface: "com.velmora.Tessaro.ZELEvents", member: "event" };
const SETTINGS = ["com.velmora.Tessaro.SettingsManager", "/com/velmora/Tessaro/SettingsManager"];
const RECONNECT_MS = 2000;

// Prints two JSON texts, one per line: the problems of the rollout, and its plan.
const CHECK_AND_PLAN = `
set -e
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
head -c "$1" >"$directory/DefaultActions"
cat >"$directory/DefaultKeys"
check='' plan=''
[ ! -s "$directory/DefaultActions" ] || check="$directory/DefaultActions" plan="--actions $directory/DefaultActions"
[ ! -s "$directory/DefaultKeys" ] || check="$check $directory/DefaultKeys" plan="$plan --keys $directory/DefaultKeys"
progkeysctl defaults check --json=short \${2:+--limit "$2"} $check || [ $? = 4 ]
progkeysctl defaults plan --json=short --all $plan
`;

export class Bus {
  /** @param {{onOwner: (isThere: boolean) => void, onEvent: (event: Event) => void,
   *   onForeignEvent: (event: Event) => void, onLost: () => void}} handlers */
  constructor(handlers) {
    this.handlers = handlers;
    this.client = this.#connected();
  }

  #connected() {
    const client = cockpit.dbus(SERVICE, { bus: "system" });
    client.addEventListener("owner", (_, owner) => this.handlers.onOwner(Boolean(owner)));
    client.addEventListener("close", () => {
      this.handlers.onLost();
      setTimeout(() => { this.client = this.#connected(); }, RECONNECT_MS);
    });
    client.subscribe(EVENTS, (/** @type {string} */ path, /** @type {string} */ _interface, /** @type {string} */ _signal, /** @type {any[]} */ body) => {
      const event = eventFrom(path, body);
      if (event)
        this.handlers.onEvent(event);
    });
    return client;
  }

  /** Hears the presses that modules send, for as long as the page is open. */
  hearPresses() {
    if (this.monitor)
      return;
    let rest = "";
    this.monitor = cockpit.spawn(["progkeysctl", "monitor", "--json=short", "--match", "AOM_KEY_PRESS_EVENT"], { err: "message" });
    this.monitor.stream((/** @type {string} */ output) => {
      const lines = (rest + output).split("\n");
      rest = lines.pop() ?? "";
      for (const line of lines)
        this.handlers.onForeignEvent(JSON.parse(line));
    });
    const end = () => { this.monitor = null; };
    this.monitor.then(end, end);
  }

  /** @param {string} method @param {string} type @param {any[]} values @returns {Promise<any>} */
  async #call(method, type = "", ...values) {
    const [result] = await this.client.call(PATH, INTERFACE, method, values, { type });
    return result;
  }

  allKeys() {
    return this.#call("getAllProgrammableKeys");
  }

  allActions() {
    return this.#call("getAllActions");
  }

  /** @param {Key} key @returns {Promise<number>} */
  createKey(key) {
    return this.#call("createProgrammableKey", KEY, keyToWire(key));
  }

  /** @param {Key} key @returns {Promise<number>} */
  modifyKey(key) {
    return this.#call("modifyProgrammableKey", KEY, keyToWire(key));
  }

  /** Not by a call: the bridge of newer versions cannot send maps whose keys are numbers.
   * @param {Record<number, number>} positions */
  async moveKeys(positions) {
    const moves = Object.entries(positions).map(([idKey, position]) => `${idKey}=${position}`);
    await cockpit.spawn(["progkeysctl", "key", "move", "--", ...moves], { err: "message" });
  }

  /** @param {number} idKey @returns {Promise<number>} */
  deleteKey(idKey) {
    return this.#call("deleteProgrammableKey", "x", idKey);
  }

  /** @param {Action} action @returns {Promise<number>} */
  addAction(action) {
    return this.#call("addAction", ACTION, actionToWire(action));
  }

  /** @param {Action} action @returns {Promise<number>} */
  modifyAction(action) {
    return this.#call("modifyAction", ACTION, actionToWire(action));
  }

  /** @param {number} idAction @returns {Promise<number>} */
  deleteAction(idAction) {
    return this.#call("deleteAction", "x", idAction);
  }

  /** Whether the bus lets this user change keys: it is asked with a change of nothing. */
  async mayWrite() {
    try {
      await this.#call("changeProgrammableKeysPosition", "a{ii}", {});
      return true;
    } catch (caught) {
      const error = /** @type {any} */ (caught);
      if (/AccessDenied|access-denied/.test(`${error.name} ${error.problem}`))
        return false;
      throw error;
    }
  }

  /** The maximum number of keys on the set; null if it is not known.
   * @returns {Promise<number|null>} */
  async limit() {
    const settings = cockpit.dbus(SETTINGS[0], { bus: "system" });
    try {
      const [text] = await settings.call(SETTINGS[1], INTERFACE, "getSettingValue", ["ProgKeysMax"], { type: "s" });
      return /^\s*[+-]?\d+\s*$/.test(text) ? Number(text) : null;
    } catch {
      return null;
    } finally {
      settings.close();
    }
  }

  /** Presses a key of a module, as the module would; the answer is that of the service.
   * @param {string} place @param {number} moduleType @returns {Promise<any>} */
  async press(place, moduleType) {
    return JSON.parse(await cockpit.spawn(
      ["progkeysctl", "press", "--json=short", `--module-type=${moduleType}`, "--", place], { err: "message" }));
  }

  /** The problems of a rollout, and what it would change.
   * @param {string} actions @param {string} keys @param {number|null} limit
   * @returns {Promise<{problems: any[], rows: any[]}>} */
  async plan(actions, keys, limit) {
    const size = new TextEncoder().encode(actions).length;
    const run = cockpit.spawn(["sh", "-c", CHECK_AND_PLAN, "sh", String(size), String(limit ?? "")], { err: "message" });
    const [problems, rows] = (await run.input(actions + keys)).trim().split("\n");
    return { problems: JSON.parse(problems), rows: JSON.parse(rows) };
  }
}
