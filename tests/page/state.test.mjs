// The state of the page, without a browser: what calls and events make of it.

import assert from "node:assert/strict";
import test from "node:test";
import { argumentsText, eventFrom, matching } from "../../tools/page/events.js";
import { countsOf, planOf } from "../../tools/page/plan.js";
import { clip } from "../../tools/page/records.js";
import { State } from "../../tools/page/state.js";
import { spokenName } from "../../tools/page/units.js";

const PATH = "/com/velmora/Tessaro/ZelProgrammableKeys";
const KEY = "(xsxsisiii)";
const ACTION = "(xsisssss)";
const ON_SET = [1, "dm", 5, "home", 3, "bell", 0, 0, 0];
const ON_MODULE = [2, "", 5, "module1", 7, "star", 1, 1, 1];
const CALL = [5, "dm", 1, "call", "", "501", "Reception", "Rec"];

const event = (name, ...values) => eventFrom(PATH, [name, values.map(([label, t, v]) => [label, { t, v }, true])]);
const place = (state, name) => state.units().flatMap(({ places }) => places).find((one) => one.place === name);

function phone() {
  const state = new State();
  state.read([ON_SET, ON_MODULE], [CALL]);
  return state;
}

test("keys are drawn by container and module, with the label that the phone shows", () => {
  const units = phone().units();
  assert.deepEqual(units.map(({ name, places }) => [name, places.length]), [["home", 12], ["Module 1", 24]]);
  assert.equal(place(phone(), "home/3").label, "Reception");
  assert.equal(place(phone(), "1/7").label, "Rec");
  assert.equal(place(phone(), "home/4").key, null);
});

test("a phone without keys has empty places", () => {
  const state = new State();
  state.read([], []);
  assert.deepEqual(state.units().map(({ name, places }) => [name, places.every(({ key }) => !key)]), [["home", true]]);
});

test("keys at odd positions are drawn without the places between", () => {
  const state = new State();
  const at = (id, position) => [id, "", 5, "home", position, "", 0, 0, 0];
  state.read([at(1, -3), at(2, 2147483647), at(3, 4), at(4, 4)], [CALL]);
  const [home] = state.units();
  assert.ok(home.places.length < 300);
  assert.equal(home.places[0].number, -3);
  assert.equal(home.places.at(-1).number, 2147483647);
  assert.equal(home.places.filter(({ isShared }) => isShared).length, 2);
});

test("events change keys and actions", () => {
  const state = phone();
  state.take(event("KEY_MODIFY_NTF", ["idKey", KEY, [1, "dm", 5, "home", 9, "bell", 0, 0, 0]]), "");
  assert.equal(place(state, "home/3").key, null);
  assert.equal(place(state, "home/9").key.idKey, 1);
  state.take(event("ACTION_MODIFY_NTF", ["idAction", ACTION, [5, "dm", 1, "call", "", "501", "Front desk", "Rec"]]), "");
  assert.equal(place(state, "home/9").label, "Front desk");
  state.take(event("ACTION_DELETE_NTF", ["idAction", "x", 5]), "");
  assert.equal(place(state, "home/9").lacksAction, true);
  state.take(event("KEY_DELETE_NTF", ["idKey", "x", 1]), "");
  assert.equal(state.keys.has(1), false);
});

test("a module shows what the last event said, until its key changes", () => {
  const state = phone();
  const at = [["addr", "i", 1], ["aom_type", "i", 1], ["key_num", "i", 7]];
  state.take(event("AOM_SET_ICON_PROPERTY_REC", ...at, ["icon_x", "i", 2], ["icon_y", "i", 5]), "");
  state.take(event("AOM_SET_LABEL_PROPERTY_REC", ...at, ["label_state", "i", 3], ["label_str", "s", "Busy"]), "");
  assert.deepEqual(place(state, "1/7").display, { icon: "2, 5", label: "Busy", labelState: 3 });
  assert.equal(place(state, "1/7").label, "Busy");
  state.read([ON_SET, ON_MODULE], [CALL]);
  assert.equal(place(state, "1/7").label, "Busy");
  state.take(event("KEY_MODIFY_NTF", ["idKey", KEY, [2, "", 6, "module1", 7, "star", 1, 1, 1]]), "");
  assert.deepEqual(place(state, "1/7").display, {});
});

test("a press lights its place", () => {
  const state = phone();
  state.take(event("AOMKEY_PRESS_NTF", ["key", KEY, ON_MODULE], ["action", ACTION, CALL], ["exists", "b", true]), "");
  assert.deepEqual(state.pressed, ["1/7"]);
});

test("the log keeps the last 1000 events and shortens long texts", () => {
  const state = new State();
  for (let index = 0; index < 1200; ++index)
    state.take(event("KEY_DELETE_NTF", ["idKey", "x", index]), "");
  assert.equal(state.log.length, 1000);
  assert.equal(state.log.at(-1).text, "idKey=1199");
  state.take(event("ACTION_CREATE_NTF", ["idAction", ACTION, [7, "", 1, "", "", "", "x".repeat(1 << 20), ""]]), "");
  assert.ok(JSON.stringify(state.log.at(-1)).length < 10000);
  assert.equal(state.actions.get(7).label.length, 1 << 20);
  assert.equal(matching(state.log, "action_create").length, 1);
});

test("events are written as the command line writes them", () => {
  const created = event("KEY_CREATE_NTF", ["idKey", KEY, [2, "", 5, "a\n", 7, "", 1, 1, 1]]);
  assert.equal(argumentsText(created), 'idKey={idKey=2 idAction=5 container="a\\n" position=7 type=1 aom_type=1 aom_addr=1}');
  assert.equal(argumentsText(event("X", ["exists", "b", false])), "exists=no");
  assert.equal(eventFrom(PATH, ["X", 5]), null);
});

test("accessible names contain the label and the place", () => {
  assert.equal(spokenName(place(phone(), "home/3")), "Reception: home, position 3, provisioned");
  assert.equal(spokenName(place(phone(), "1/8")), "Empty: module 1, key 8");
});

test("long texts are cut between whole characters", () => {
  assert.equal(clip("😀😀😀", 3), "😀…");
  assert.equal(clip("abc", 3), "abc");
});

test("a plan is drawn before and after", () => {
  const content = { dmId: "new", container: "home", position: 4, icon: "cup", type: 0, aom_type: 0, aom_addr: 0, idKey: null, idAction: null };
  const row = (kind, what, more) => ({ kind, what, id: null, dmId: "", field: null, old: null, new: null, record: null, content: null, detail: "", reason: null, ...more });
  const rows = [
    row("action", "added", { dmId: "new", content: { dmId: "new", type: 1, action: "", webAppName: "", arguments: "", label: "Menu", shortLabel: "" } }),
    row("action", "changed", { id: 5, field: "label", new: "Front desk" }),
    row("action", "changed", { id: 5, field: "arguments", new: "502" }),
    row("key", "added", { dmId: "new", record: 1, content }),
    row("key", "removed", { id: 1 }),
    row("key", "dropped", { dmId: "gone", record: 2, reason: "no such action" }),
  ];
  const state = phone();
  const plan = planOf(state, rows);
  const find = (units, name) => units.flatMap(({ places }) => places).find((one) => one.place === name);
  assert.equal(find(plan.before, "home/3").mark, "removed");
  assert.equal(find(plan.after, "home/3").key, null);
  assert.deepEqual([find(plan.after, "home/4").label, find(plan.after, "home/4").mark], ["Menu", "added"]);
  assert.equal(find(plan.after, "1/7").mark, "changed");
  assert.deepEqual(countsOf(rows), { action: { added: 1, changed: 1 }, key: { added: 1, removed: 1, dropped: 1 } });
  assert.equal(plan.dropped.length, 1);
  assert.equal(state.actions.get(5).label, "Reception");
});
