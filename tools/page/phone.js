// The view of the phone: the telephone, what is known about the chosen key, and the log.

import { Desk } from "./desk.js";
import { button, confirmed, el, foreign, openDialog, whenChanged } from "./dom.js";
import { enableDragging } from "./drag.js";
import { keyForm, keyNames, newKeyAt, spotForm } from "./forms.js";
import { LogView } from "./log.js";
import { clip, placeName, placeText, spotOf } from "./state.js";
import { answerText } from "./texts.js";

/** @typedef {import("./state.js").Place} Place @typedef {import("./state.js").Spot} Spot
 * @typedef {import("./state.js").Key} Key */

export class PhoneView {
  /** @param {import("./app.js").App} app */
  constructor(app) {
    this.app = app;
    /** @type {(Spot & {place: string})|null} */
    this.chosen = null;
    this.mode = "details"; // or "create", "edit"
    /** @type {Key|null} the key that the user moves by keyboard or button */
    this.moving = null;
    this.answer = "";
    this.desk = new Desk("Telephone");
    this.panel = el("section", { className: "panel", "aria-label": "Chosen key" });
    this.status = el("p", { className: "answer", role: "status" });
    this.counts = el("span", { className: "counts" });
    this.log = new LogView(app);
    const tools = el("div", { className: "toolbar" }, this.counts,
      el("span", { className: "legend own" }, "made by users"), el("span", { className: "legend provisioned" }, "provisioned"),
      button("New key…", () => this.#askForPlace(), { writes: true }));
    this.element = el("div", { className: "phone-view" }, el("div", { className: "stage" }, tools, this.desk.element),
      el("div", { className: "side" }, this.panel, this.log.element));
    this.drawPanel = whenChanged(() => this.#drawPanel());
    this.#listen();
    enableDragging(this.desk, () => app.mayWrite(), (from, to) => from.key && this.#move(from.key, to));
  }

  draw() {
    const { state } = this.app;
    const units = state.units();
    this.desk.draw(units);
    this.desk.choose(this.chosen);
    for (const place of state.pressed.splice(0))
      this.desk.light(place);
    const modules = units.filter((unit) => unit.onModule).length;
    this.counts.textContent = `${state.setKeyCount()}${state.limit === null ? "" : ` of ${state.limit}`} keys on the set, ` +
      `${state.keys.size - state.setKeyCount()} on ${modules} add-on ${modules === 1 ? "module" : "modules"}`;
    this.desk.status.textContent = state.service === "running" ? `${state.keys.size} keys` : "No service";
    const key = this.#chosenKey();
    const isForm = this.mode !== "details";
    this.drawPanel([this.chosen, this.mode, isForm || [key, key && state.actions.get(key.idAction), this.answer, this.moving]]);
    this.log.draw();
  }

  #listen() {
    this.panel.addEventListener("keydown", (/** @type {KeyboardEvent} */ event) => {
      if (event.key === "Escape" && this.mode === "details")
        this.#close();
    });
    const { element } = this.desk;
    element.addEventListener("click", (/** @type {Event} */ event) => {
      const target = /** @type {any} */ (event.target).closest("[data-place]");
      if (target)
        this.#activate(target);
    });
    element.addEventListener("keydown", (/** @type {KeyboardEvent} */ event) => {
      const target = /** @type {any} */ (event.target).closest("[data-place]");
      if (target && !event.ctrlKey && !event.altKey && !event.metaKey)
        this.#onKey(event, target);
    });
  }

  /** @param {KeyboardEvent} event @param {any} target */
  #onKey(event, target) {
    const place = this.desk.placeOf.get(target);
    if (/^Arrow|^Home$|^End$/.test(event.key)) {
      const next = this.desk.neighbour(target, event.key);
      if (next)
        this.desk.focus(next);
    } else if (event.key === "Escape" && this.moving) {
      this.#startMoving(null);
    } else if (place?.key && this.app.mayWrite() && /^[em]$|^Delete$/.test(event.key)) {
      this.#choose(place, "");
      if (event.key === "e")
        this.#setMode("edit");
      else
        event.key === "m" ? this.#startMoving(place.key) : this.#delete(place.key);
    } else {
      return;
    }
    event.preventDefault();
  }

  /** @param {any} target */
  #activate(target) {
    const place = this.desk.placeOf.get(target);
    if (!place)
      return;
    this.desk.focus(target);
    if (this.moving) {
      this.#move(this.moving, place);
      return;
    }
    this.#choose(place, "");
    if (place.onModule && this.app.mayWrite())
      this.#press(place);
  }

  /** @param {Spot & {place: string, key?: Key|null}} spot @param {string} answer */
  #choose(spot, answer) {
    const { onModule, container, address, number, moduleType, place } = spot;
    this.chosen = { onModule, container, address, number, moduleType, place };
    this.answer = answer;
    this.mode = "details";
    if (!spot.key && !onModule && this.app.mayWrite())
      this.mode = "create";
    this.draw();
  }

  /** @param {"details"|"create"|"edit"} mode */
  #setMode(mode) {
    this.mode = mode;
    this.draw();
    this.panel.querySelector("select, input")?.focus();
  }

  #focusChosen() {
    const [element] = this.chosen ? this.desk.elementsAt(this.chosen.place, this.chosen.onModule) : [];
    if (element)
      this.desk.focus(element);
  }

  #close() {
    this.#focusChosen();
    this.chosen = null;
    this.mode = "details";
    this.draw();
  }

  #chosenKey() {
    return this.chosen ? this.app.state.keyAt(this.chosen) ?? null : null;
  }

  /** @param {Spot & {place: string}} place */
  async #press(place) {
    await this.app.attempt(async () => {
      const answer = await this.app.bus.press(place.place, place.moduleType);
      if (this.chosen?.place === place.place && this.chosen.onModule)
        this.answer = answerText(answer);
      this.draw();
    });
  }

  /** @param {Key|null} key */
  #startMoving(key) {
    this.moving = key;
    this.desk.element.classList.toggle("moving", Boolean(key));
    this.answer = key ? "Choose the new place: click it, or go there with the arrow keys and press Enter. Escape cancels." : "";
    this.mode = "details";
    this.draw();
    if (key)
      this.desk.element.querySelector(`[data-key-id="${key.idKey}"]`)?.focus();
  }

  /** @param {Key} key @param {Spot} spot */
  async #move(key, spot) {
    this.#startMoving(null);
    await this.app.attempt(async () => {
      await this.app.requests.move(key, spot);
      this.#choose({ ...spot, place: placeName(spot), key }, `Key ${key.idKey} is now on ${placeText(spot)}.`);
    });
  }

  /** @param {Key} key */
  async #delete(key) {
    if (await confirmed("Delete this key?", [el("p", {}, `This deletes ${keyNames([key])}. Its action stays.`)], "Delete key"))
      await this.app.attempt(() => this.app.requests.deleteKey(key));
    this.draw();
  }

  #askForPlace() {
    const dialog = openDialog("New key", spotForm({
      go: (spot) => {
        dialog.close();
        this.#choose({ ...spot, place: placeName(spot), key: this.app.state.keyAt(spot) }, "");
        this.#setMode(this.#chosenKey() ? "details" : "create");
      },
      cancel: () => dialog.close(),
    }));
  }

  /** Draws the panel again. The focus stays on the same button, or returns to the phone if that is gone. */
  #drawPanel() {
    const focused = this.panel.contains(document.activeElement) ? document.activeElement : null;
    this.#fillPanel();
    this.app.applyRights();
    if (!focused || focused.isConnected)
      return;
    const buttons = [...this.panel.querySelectorAll("button:enabled")];
    const same = buttons.find((other) => other.textContent === focused.textContent);
    same ? same.focus() : this.#focusChosen();
  }

  #fillPanel() {
    const { chosen, app } = this;
    this.panel.classList.toggle("chosen", Boolean(chosen));
    if (!chosen) {
      this.panel.replaceChildren(el("h2", {}, "No key chosen"), el("p", { className: "hint" },
        "Choose a key to see what it does. A key of an add-on module is also pressed. An empty place offers to create a key."),
      el("p", { className: "hint" }, "Arrow keys go from key to key. E edits a key, M moves it, Delete deletes it."));
      return;
    }
    const key = this.#chosenKey();
    this.status.textContent = this.answer;
    this.status.hidden = !this.answer;
    const content = this.mode === "details" ? this.#details(key, chosen) : [this.#form(key, chosen)];
    const action = key && app.state.actions.get(key.idAction);
    const title = key ? foreign(clip(action?.label ?? "") || "(no label)") : "Empty place";
    const close = button("×", () => this.#close(), { className: "close" });
    close.setAttribute("aria-label", "Close");
    this.panel.replaceChildren(close, el("h2", {}, title), el("p", { className: "where" }, foreign(placeText(chosen))), this.status, ...content);
  }

  /** @param {Key|null} key @param {Spot & {place: string}} chosen */
  #form(key, chosen) {
    return keyForm({
      state: this.app.state,
      key: key ?? newKeyAt(chosen),
      cancel: () => this.#setMode("details"),
      refuse: (error) => this.app.refuse(error),
      save: async (value, newAction) => {
        if (value.idKey < 0)
          await this.app.requests.createKey(value, newAction);
        else
          await this.app.requests.changeKey(value, newAction);
        await this.app.refresh();
        this.app.messages.replaceChildren();
        const saved = this.app.state.keys.get(value.idKey);
        const spot = saved ? spotOf(saved) : chosen;
        this.#choose({ ...spot, place: placeName(spot), key: value }, value.idKey < 0 ? "The key was created." : "The key was saved.");
      },
    });
  }

  /** @param {Key|null} key @param {Spot & {place: string}} chosen */
  #details(key, chosen) {
    const press = chosen.onModule ? [button("Press", () => this.#press(chosen), { writes: true, className: "primary" })] : [];
    if (!key)
      return [el("div", { className: "buttons" }, ...press, button("Create a key here", () => this.#setMode("create"), { writes: true }))];
    const action = this.app.state.actions.get(key.idAction);
    const rows = [["Key", `${key.idKey}${key.dmId ? `, provisioned as “${clip(key.dmId, 60)}”` : ", made by a user"}`],
      ["Icon", clip(key.icon, 60) || "none"],
      ["Action", action ? `${key.idAction}, type ${action.type}` : `${key.idAction}, which does not exist`],
      ["Does", clip([action?.action, action?.webAppName, action?.arguments].filter(Boolean).join(" · ")) || "nothing"],
      ["Short label", clip(action?.shortLabel ?? "") || "none"]];
    return [
      el("dl", {}, ...rows.flatMap(([name, value]) => [el("dt", {}, name), el("dd", {}, foreign(value))])),
      el("div", { className: "buttons" }, ...press,
        button("Edit", () => this.#setMode("edit"), { writes: true }),
        button("Move", () => this.#startMoving(key), { writes: true }),
        button("Delete", () => this.#delete(key), { writes: true, className: "danger" }),
        button("Edit action", () => action && this.app.editAction(action), { writes: true })),
    ];
  }
}
