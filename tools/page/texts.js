// What the page says about refusals and answers: what happened, and what to do.

import { RESERVED_ACTION, clip, functionText, placeText, spotOf } from "./records.js";

const LIMIT_REACHED = -1;

/** A request that was not carried out. The message says why and what to do. */
export class Refusal extends Error {}

/** @param {string} done @param {Key|Action} record @param {number} code @param {State} state */
function reasonOf(done, record, code, state) {
  const isKey = "idKey" in record;
  if (isKey && done === "created" && code === LIMIT_REACHED)
    return `The set has reached its limit${state.limit === null ? "" : ` of ${state.limit} keys`}. ` +
      "Delete a key of the set, or increase the setting ProgKeysMax. Keys of add-on modules do not count.";
  if (done === "deleted" && !isKey && record.idAction === RESERVED_ACTION)
    return "It is the reserved action. You can change it, but not delete it.";
  if (done !== "created" && !(isKey ? state.keys.has(record.idKey) : state.actions.has(record.idAction)))
    return "It no longer exists: someone else has deleted it.";
  if (isKey && done !== "deleted" && !state.actions.has(record.idAction))
    return `Action ${record.idAction} does not exist. Select another action, or create a new one.`;
  if (done === "deleted" && record.dmId)
    return `It is provisioned as “${clip(record.dmId, 60)}”. ` + (isKey
      ? "Remove it from the setting DefaultKeys. The service then deletes it the next time it starts."
      : 'Remove it from the setting DefaultActions. It stays in the database until you run "progkeysctl restore default".');
  return "The service could not write to the database. Check the log of the service, and the free space and " +
    "permissions of its data directory.";
}

/** Why the service did not carry out a change.
 * @param {string} method @param {Key|Action} record @param {number} code @param {State} state */
export function refusalOf(method, record, code, state) {
  const done = method.startsWith("delete") ? "deleted" : method.startsWith("modify") ? "changed" : "created";
  const [kind, id] = "idKey" in record ? ["Key", record.idKey] : ["Action", record.idAction];
  const name = done === "created" ? `The ${kind.toLowerCase()}` : `${kind} ${id}`;
  return new Refusal(`${name} was not ${done}. ${reasonOf(done, record, code, state)}`);
}

/** @param {Key} other the key that is at the place */
export const placeTaken = (other) => new Refusal(`The key was not created. Key ${other.idKey} is already at ` +
  `${placeText(spotOf(other))}. Select another place.`);

/** Whether the bus refused a call.
 * @param {any} error */
export const isDenied = (error) => /AccessDenied|access-denied|not-authorized/.test(`${error?.name} ${error?.problem}`);

/** What to say about an error of a call or a command.
 * @param {any} error @returns {string} */
export function errorText(error) {
  if (error instanceof Refusal)
    return error.message;
  const names = `${error?.name ?? ""} ${error?.problem ?? ""}`;
  if (isDenied(error) || error?.exit_status === 5)
    return "You are not allowed to do this. Ask an administrator to add you to the group progkeys-admin, then log in again.";
  if (/ServiceUnknown|NameHasNoOwner|NoReply|Disconnected|disconnected/.test(names) || error?.exit_status === 8)
    return "The service is not running. Try again when it has started.";
  if (/not-found/.test(names) || error?.exit_status === 127)
    return "progkeysctl was not found. Install the package progkeysctl.";
  const said = String(error?.message || error?.problem || error).replace(/^progkeysctl: error: /, "");
  return `The request failed: ${clip(said, 400)}`;
}

/** What the service answered to a press.
 * @param {{exists: boolean, key: Key, action?: Action}} answer */
export function answerText({ exists, key, action }) {
  if (!exists)
    return "Not programmed: no key is stored at this place.";
  if (!action || (action.idAction === RESERVED_ACTION && key.idAction !== RESERVED_ACTION))
    return `Key ${key.idKey}: its action ${key.idAction} does not exist.`;
  return [`Key ${key.idKey}: action ${action.idAction} “${clip(action.label)}”`, functionText(action)].filter(Boolean).join(", ");
}
