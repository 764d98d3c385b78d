// What the user is told when the service refuses, and what the page undoes.

import assert from "node:assert/strict";
import test from "node:test";
import { Requests, movedTo } from "../../tools/page/requests.js";
import { State } from "../../tools/page/state.js";
import { answerText, errorText } from "../../tools/page/texts.js";

const KEY = { idKey: 1, dmId: "", idAction: 5, container: "home", position: 3, icon: "", type: 0, aom_type: 0, aom_addr: 0 };
const OTHER = { ...KEY, idKey: 2, position: 4 };
const NEW = { ...KEY, idKey: -1, position: 9 };
const spot = (number) => ({ onModule: false, container: "home", address: 0, number, moduleType: 0 });
const ACTION = { idAction: 5, dmId: "", type: 1, action: "call", webAppName: "", arguments: "", label: "A", shortLabel: "" };

/** A service that answers as told and notes what it was asked. */
function service(answers) {
  const asked = [];
  const answer = async (...words) => {
    asked.push(words);
    return answers[words[0]];
  };
  const bus = { change: answer, moveKeys: (positions) => answer("moveKeys", positions) };
  const state = new State();
  state.limit = 24;
  state.read([KEY, OTHER].map((key) => Object.values(key)), [Object.values(ACTION)]);
  return { asked, state, requests: new Requests(state, bus, async () => {}) };
}

test("the limit is told with what to do", async () => {
  const { requests } = service({ createProgrammableKey: -1 });
  await assert.rejects(requests.createKey(NEW, null), /limit of 24 keys.*Delete a key of the set, or increase the setting ProgKeysMax/);
});

test("a missing action is told", async () => {
  const { requests } = service({ createProgrammableKey: -2 });
  await assert.rejects(requests.createKey({ ...NEW, idAction: 9 }, null), /Action 9 does not exist/);
});

test("a new action is deleted again when its key is refused", async () => {
  const { requests, asked } = service({ addAction: 77, createProgrammableKey: -1, deleteAction: 0 });
  await assert.rejects(requests.createKey(NEW, ACTION));
  assert.deepEqual(asked.map(([name]) => name), ["addAction", "createProgrammableKey", "deleteAction"]);
  assert.equal(asked[1][1].idAction, 77);
  assert.equal(asked[2][1].idAction, 77);
});

test("a new action stays when its key is stored, but the phone cannot be read after that", async () => {
  const { requests, asked } = service({ addAction: 77, modifyProgrammableKey: 0, deleteAction: 0 });
  requests.refresh = async () => {
    if (asked.some(([name]) => name === "modifyProgrammableKey"))
      throw new Error("timeout");
  };
  await assert.rejects(requests.changeKey(KEY, ACTION), /timeout/);
  assert.deepEqual(asked.map(([name]) => name), ["addAction", "modifyProgrammableKey"]);
});

test("provisioned and reserved rows are told from each other", async () => {
  const { requests } = service({ deleteProgrammableKey: -2, deleteAction: -2 });
  await assert.rejects(requests.change("deleteProgrammableKey", { ...KEY, dmId: "post" }), /provisioned as “post”.*DefaultKeys/);
  await assert.rejects(requests.change("deleteAction", { ...ACTION, idAction: -1 }), /reserved/);
  await assert.rejects(requests.change("deleteAction", { ...ACTION, dmId: "post" }), /DefaultActions/);
  await assert.rejects(requests.change("deleteProgrammableKey", { ...KEY, idKey: 99 }), /someone else has deleted it/);
});

test("a key that moves onto another is exchanged with it", async () => {
  const { requests, asked } = service({ moveKeys: true });
  await requests.move(KEY, spot(4));
  assert.deepEqual(asked, [["moveKeys", { 1: 4, 2: 3 }]]);
});

/** Requests to a service with two keys, which others have changed since the page read them. */
function changedMeanwhile(keys, answers = {}) {
  const made = service(answers);
  made.requests.refresh = async () => made.state.read(keys.map((key) => Object.values(key)), [Object.values(ACTION)]);
  return made;
}

test("a key that is edited stays where others have moved it", async () => {
  const { requests, asked } = changedMeanwhile([{ ...KEY, position: 8 }], { modifyProgrammableKey: 0 });
  await requests.changeKey({ ...KEY, icon: "bell" }, null);
  assert.deepEqual(asked, [["modifyProgrammableKey", { ...KEY, icon: "bell", position: 8 }]]);
});

test("a key that others have deleted is neither edited nor moved", async () => {
  const { requests, asked } = changedMeanwhile([OTHER]);
  await assert.rejects(requests.changeKey(KEY, ACTION), /Key 1 was not changed. It no longer exists/);
  await assert.rejects(requests.move(KEY, spot(7)), /Key 1 was not changed. It no longer exists/);
  assert.deepEqual(asked, []);
});

test("a key is not created at a place that others have taken", async () => {
  const { requests, asked } = changedMeanwhile([{ ...OTHER, position: 9 }]);
  await assert.rejects(requests.createKey(NEW, ACTION), /Key 2 is already at home, position 9/);
  assert.deepEqual(asked, []);
});

test("a move begins when the move before it has been read", async () => {
  const { requests, state, asked } = service({});
  const keys = { 1: KEY, 2: OTHER };
  requests.bus = { moveKeys: async (positions) => {
    asked.push(positions);
    for (const [id, position] of Object.entries(positions))
      keys[id] = { ...keys[id], position };
  } };
  requests.refresh = async () => state.read(Object.values(keys).map((key) => Object.values(key)), [Object.values(ACTION)]);
  await Promise.all([requests.move(KEY, spot(9)), requests.move(OTHER, spot(9))]);
  assert.deepEqual(asked, [{ 1: 9 }, { 1: 4, 2: 9 }]);
});

test("a key that moves to a module takes its address and type", () => {
  const moved = movedTo(KEY, { onModule: true, container: "module2", address: 2, number: 8, moduleType: 1 });
  assert.deepEqual([moved.container, moved.position, moved.type, moved.aom_type, moved.aom_addr], ["module2", 8, 1, 1, 2]);
  const back = movedTo(moved, { onModule: false, container: "home", address: 0, number: 8, moduleType: 0 });
  assert.deepEqual([back.container, back.type, back.aom_addr], ["home", 0, 0]);
});

test("errors of the bus and of the tool are told in words", () => {
  assert.match(errorText({ name: "org.freedesktop.DBus.Error.AccessDenied" }), /progkeys-admin/);
  assert.match(errorText({ problem: "access-denied" }), /progkeys-admin/);
  assert.match(errorText({ name: "org.freedesktop.DBus.Error.ServiceUnknown" }), /not running/);
  assert.match(errorText({ message: "odd" }), /odd/);
});

test("the answer to a press is told", () => {
  assert.match(answerText({ exists: false, key: KEY, action: ACTION }), /Not programmed/);
  assert.match(answerText({ exists: true, key: KEY, action: ACTION }), /Key 1: action 5 “A”, call/);
  assert.match(answerText({ exists: true, key: KEY, action: { ...ACTION, idAction: -1 } }), /does not exist/);
});
