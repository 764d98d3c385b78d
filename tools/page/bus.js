// The phone on the bus, through Cockpit. Every method has an explicit signature, so that no introspection
// is needed.

import { eventFrom } from "./events.js";
import { ACTION, KEY, toWire } from "./records.js";
import { isDenied } from "./texts.js";

const SERVICE = "com.velmora.Tessaro.ZelProgrammableKeys";
const PATH = "/com/velmora/Tessaro/ZelProgrammableKeys";
const INTERFACE = "com.velmora.Tessaro.ZELInterface";
const EVENTS = { interface: "com.velmora.Tessaro.ZELEvents", member: "event" };
const SETTINGS = ["com.velmora.Tessaro.SettingsManager", "/com/velmora/Tessaro/SettingsManager"];
const RECONNECT_MS = 2000;
const LARGEST_INT = 2 ** 31 - 1;

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

/** Runs a command with the rights of the user.
 * @param {string[]} command */
const run = (...command) => cockpit.spawn(command, { err: "message" });

export class Bus {
  /** @param {{onOwner: (isThere: boolean) => void, onEvent: (event: PhoneEvent) => void,
   *   onForeignEvent: (event: PhoneEvent) => void, onLost: () => void}} handlers */
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
    client.subscribe(EVENTS, (path, _interface, _signal, body) => {
      const event = eventFrom(path, body);
      if (event)
        this.handlers.onEvent(event);
    });
    return client;
  }

  /** Receives the presses that modules send, as long as the page is open. */
  hearPresses() {
    if (this.monitor)
      return;
    let rest = "";
    this.monitor = run("progkeysctl", "monitor", "--json=short", "--match", "AOM_KEY_PRESS_EVENT");
    this.monitor.stream((output) => {
      const lines = (rest + output).split("\n");
      rest = lines.pop() ?? "";
      for (const line of lines)
        this.handlers.onForeignEvent(JSON.parse(line));
    });
    const end = () => { this.monitor = null; };
    this.monitor.then(end, end);
  }

  /** @param {string} method @param {string} [type] @param {any[]} values @returns {Promise<any>} */
  async #call(method, type = "", ...values) {
    const [result] = await this.client.call(PATH, INTERFACE, method, values, { type });
    return result;
  }

  /** All keys and all actions, in the form of the bus. */
  readAll() {
    return Promise.all([this.#call("getAllProgrammableKeys"), this.#call("getAllActions")]);
  }

  /** Asks for a change of a key or an action; the result is its id or a code.
   * @param {string} method @param {Key|Action} record @returns {Promise<number>} */
  change(method, record) {
    const [type, id] = "idKey" in record ? [KEY, record.idKey] : [ACTION, record.idAction];
    return method.startsWith("delete") ? this.#call(method, "x", id) : this.#call(method, type, toWire(type, record));
  }

  /** Not by a call: the bridge of newer versions cannot send maps whose keys are numbers.
   * @param {Record<number, number>} positions */
  moveKeys(positions) {
    return run("progkeysctl", "key", "move", "--", ...Object.entries(positions).map((move) => move.join("=")));
  }

  /** Whether the bus lets this user change keys: tested with an empty change. */
  async mayWrite() {
    try {
      await this.#call("changeProgrammableKeysPosition", "a{ii}", {});
      return true;
    } catch (error) {
      if (isDenied(error))
        return false;
      throw error;
    }
  }

  /** The maximum number of keys on the set, as the service reads the setting; null if it is not known.
   * @returns {Promise<number|null>} */
  async limit() {
    const settings = cockpit.dbus(SETTINGS[0], { bus: "system" });
    try {
      const [text] = await settings.call(SETTINGS[1], INTERFACE, "getSettingValue", ["ProgKeysMax"], { type: "s" });
      const limit = /^\s*[+-]?\d+\s*$/.test(text) ? Number(text) : 0;
      return limit <= LARGEST_INT ? Math.max(0, limit) : 0;
    } catch {
      return null;
    } finally {
      settings.close();
    }
  }

  /** Presses a key of a module, as the module would; the answer is that of the service.
   * @param {Spot} spot @returns {Promise<{exists: boolean, key: Key, action: Action}>} */
  async press({ address, number, moduleType }) {
    return JSON.parse(await run("progkeysctl", "press", "--json=short", `--module-type=${moduleType}`, "--", `${address}/${number}`));
  }

  /** The problems of a rollout, and what it would change.
   * @param {string} actions @param {string} keys @param {number|null} limit
   * @returns {Promise<{problems: any[], rows: PlanRow[]}>} */
  async plan(actions, keys, limit) {
    const size = new TextEncoder().encode(actions).length;
    const output = await run("sh", "-c", CHECK_AND_PLAN, "sh", String(size), String(limit ?? "")).input(actions + keys);
    const [problems, rows] = output.trim().split("\n").map((line) => JSON.parse(line));
    return { problems, rows };
  }
}
