// The phone before and after the merge of a rollout, from the rows of "progkeysctl defaults plan --all".

import { RESERVED_ACTION } from "./records.js";
import { unitsOf } from "./units.js";

const GONE = ["removed", "withdrawn", "dropped"];

/** The records after the merge, and what happens to each. New ones have negative ids.
 * @template T @param {Map<number, T>} stored @param {PlanRow[]} rows @param {string} idName */
function merged(stored, rows, idName) {
  const records = new Map([...stored].map(([id, record]) => [id, /** @type {any} */ ({ ...record })]));
  /** @type {Map<number, string>} */
  const marks = new Map();
  rows.forEach(({ what, id, field, content, ...row }, index) => {
    const record = records.get(id ?? NaN);
    const newId = -1000 - index;
    if (what === "added" && content) {
      records.set(newId, { ...content, [idName]: newId });
      marks.set(newId, what);
    } else if (record && what !== "kept") {
      marks.set(record[idName], what);
      if (what === "changed" && field)
        record[field] = row.new;
    }
  });
  return { records, marks };
}

/** How many actions and keys a plan adds, changes and so on.
 * @param {PlanRow[]} rows */
export function countsOf(rows) {
  /** @type {Record<string, Record<string, number>>} */
  const counts = { action: {}, key: {} };
  const seen = new Set();
  for (const { kind, what, id, record, dmId } of rows) {
    const name = `${kind} ${what} ${id ?? ""} ${record ?? dmId}`;
    if (id === null || !seen.has(name))
      counts[kind][what] = (counts[kind][what] ?? 0) + 1;
    seen.add(name);
  }
  return counts;
}

/** @param {State} state @param {PlanRow[]} rows */
export function planOf(state, rows) {
  const actions = merged(state.actions, rows.filter(({ kind }) => kind === "action"), "idAction");
  const keys = merged(state.keys, rows.filter(({ kind }) => kind === "key"), "idKey");
  const idOf = new Map([...actions.records.values()].reverse().map(({ dmId, idAction }) => [dmId, idAction]));
  for (const key of keys.records.values())
    key.idAction ??= idOf.get(key.dmId) ?? RESERVED_ACTION;

  const markOf = (/** @type {Key} */ { idKey, idAction }) => {
    const ofAction = actions.marks.get(idAction) ?? "";
    return keys.marks.get(idKey) ?? (["changed", "withdrawn"].includes(ofAction) ? ofAction : "");
  };
  const marked = (/** @type {Unit[]} */ units) => units.map((unit) =>
    ({ ...unit, places: unit.places.map((place) => ({ ...place, mark: place.key ? markOf(place.key) : "" })) }));
  const after = [...keys.records.values()].filter(({ idKey }) => !GONE.includes(keys.marks.get(idKey) ?? ""));
  return {
    before: marked(unitsOf(state.keys.values(), state.actions)),
    after: marked(unitsOf(after, actions.records)),
    counts: countsOf(rows),
    dropped: rows.filter(({ what }) => what === "dropped" || what === "refused"),
  };
}
