// What the page says about refusals and answers: what happened, and what to do.

/** @typedef {import("./state.js").Key} Key @typedef {import("./state.js").Action} Action */

import { RESERVED_ACTION, clip, placeText, spotOf } from "./state.js";

const LIMIT_REACHED = -1;
const NOT_STORED = "The database could not be written. See the log of the service, and check the free space and the permissions of its data directory.";
const NO_ACCESS = "You do not have the right to change keys. Ask an administrator to add you to the group progkeys-admin, then log in again.";

/** A request that was not carried out. The message says why and what to do. */
export class Refusal extends Error {}

/** @param {number} idAction */
const noAction = (idAction) => `There is no action ${idAction}. Choose another action, or create a new one.`;

/** @param {number} code @param {Key} key @param {boolean} hasAction @param {number|null} limit */
export function keyNotCreated(code, key, hasAction, limit) {
  if (code === LIMIT_REACHED)
    return new Refusal(`The key was not created: the limit of ${limit ?? "the"} keys on the set is reached. ` +
      "Delete a key of the set, or raise the setting ProgKeysMax. Keys on add-on modules do not count.");
  return new Refusal(`The key was not created. ${hasAction ? NOT_STORED : noAction(key.idAction)}`);
}

/** @param {Key} other the key that is at the place */
export const placeTaken = (other) => new Refusal(`The key was not created: key ${other.idKey} has been created at ` +
  `${placeText(spotOf(other))} meanwhile. Choose another place.`);

/** @param {Key} key @param {boolean} hasAction @param {boolean} hasKey */
export function keyNotChanged(key, hasAction, hasKey) {
  const reason = !hasAction ? noAction(key.idAction) : hasKey ? NOT_STORED : "It has been deleted meanwhile.";
  return new Refusal(`Key ${key.idKey} was not changed. ${reason}`);
}

/** @param {Key} key @param {boolean} hasKey */
export function keyNotDeleted(key, hasKey) {
  if (!hasKey)
    return new Refusal(`Key ${key.idKey} was not deleted. It has been deleted meanwhile.`);
  if (key.dmId)
    return new Refusal(`Key ${key.idKey} was not deleted: it is provisioned, as "${clip(key.dmId, 60)}". ` +
      "Remove it from the setting DefaultKeys. The next start of the service then deletes it.");
  return new Refusal(`Key ${key.idKey} was not deleted. ${NOT_STORED}`);
}

export const actionNotCreated = () => new Refusal(`The action was not created. ${NOT_STORED}`);

/** @param {number} idAction @param {boolean} exists */
export const actionNotChanged = (idAction, exists) => new Refusal(
  `Action ${idAction} was not changed. ${exists ? NOT_STORED : "It has been deleted meanwhile."}`);

/** @param {Action} action @param {boolean} exists */
export function actionNotDeleted(action, exists) {
  const what = `Action ${action.idAction} was not deleted`;
  if (action.idAction === RESERVED_ACTION)
    return new Refusal(`${what}: it is the reserved action. You can change it, but not delete it.`);
  if (!exists)
    return new Refusal(`${what}. It has been deleted meanwhile.`);
  if (action.dmId)
    return new Refusal(`${what}: it is provisioned, as "${clip(action.dmId, 60)}". Remove it from the setting ` +
      'DefaultActions. It stays in the database until "progkeysctl restore default" restores the phone.');
  return new Refusal(`${what}. ${NOT_STORED}`);
}

/** The words for an error of a call or a command.
 * @param {any} error @returns {string} */
export function errorText(error) {
  if (error instanceof Refusal)
    return error.message;
  const names = `${error?.name ?? ""} ${error?.problem ?? ""}`;
  if (/AccessDenied|access-denied|not-authorized/.test(names) || error?.exit_status === 5)
    return NO_ACCESS;
  if (/ServiceUnknown|NameHasNoOwner|NoReply|Disconnected|disconnected/.test(names) || error?.exit_status === 8)
    return "The service did not answer, because it is not running. Wait until it has started, then try again.";
  if (/not-found/.test(names) || error?.exit_status === 127)
    return "progkeysctl was not found. Install the package progkeysctl.";
  const said = String(error?.message || error?.problem || error).replace(/^progkeysctl: error: /, "");
  return `The request failed: ${clip(said, 400)}`;
}

/** What the service answered to a press.
 * @param {{exists: boolean, key: Key, action: Action}} answer */
export function answerText({ exists, key, action }) {
  if (!exists)
    return "Not programmed: no key is stored at this place.";
  if (action.idAction === RESERVED_ACTION && key.idAction !== RESERVED_ACTION)
    return `Key ${key.idKey}: its action ${key.idAction} does not exist.`;
  const call = `${action.action} ${action.arguments}`.trim();
  return `Key ${key.idKey}: action ${action.idAction} “${clip(action.label)}”${call ? `, ${clip(call)}` : ""}`;
}
