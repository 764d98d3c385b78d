// The view of the phone: the telephone, what is known about the selected key, and the log.

import { Desk } from "./desk.js";
import { button, confirmed, copyOf, el, foreign, one, template, whenChanged } from "./dom.js";
import { enableDragging } from "./drag.js";
import { keyForm, newKeyAt } from "./forms.js";
import { LogView } from "./log.js";
import { clip, functionText, isSamePlace, placeName, placeText, spotOf } from "./records.js";
import { answerText } from "./texts.js";

const NO_ANSWER_YET = "\u00a0"; // It keeps the height of the line.

export class PhoneView {
  /** @param {App} app */
  constructor(app) {
    this.app = app;
    /** @type {Spot|null} */
    this.selected = null;
    /** @type {Key|null} the key that the user moves by keyboard or button */
    this.moving = null;
    this.answer = "";
    this.desk = new Desk("Telephone");
    this.element = template("phone-view");
    this.panel = one(".panel", this.element);
    this.content = one(".content", this.panel);
    this.answerLine = one(".answer", this.panel);
    this.log = new LogView(app, one(".log", this.element));
    this.drawPanel = whenChanged(() => this.#drawPanel());
    one(".stage", this.element).append(this.desk.element);
    one(".create", this.element).onclick = () => this.#edit(null);
    one(".close", this.panel).onclick = () => this.#close();
    this.panel.addEventListener("keydown", (/** @type {KeyboardEvent} */ { key }) => key === "Escape" && this.#close());
    this.desk.element.onclick = (/** @type {any} */ event) => this.#activate(event.target.closest(".place"));
    this.desk.element.onkeydown = (/** @type {any} */ event) => this.#onKey(event, event.target.closest(".place"));
    enableDragging(this.desk, () => app.mayWrite(), (key, to) => this.#move(key, to));
  }

  draw() {
    const { state } = this.app;
    const units = state.units();
    this.desk.draw(units);
    this.desk.select(this.selected);
    state.pressed.splice(0).forEach((place) => this.desk.light(place));
    const modules = units.filter(({ onModule }) => onModule).length;
    const onSet = [...state.keys.values()].filter(({ type }) => type === 0).length;
    one(".counts", this.element).textContent = `${onSet}${state.limit === null ? "" : ` of ${state.limit}`} keys on the set, ` +
      `${state.keys.size - onSet} on ${modules} add-on ${modules === 1 ? "module" : "modules"}`;
    this.desk.status.textContent = state.service === "running" ? `${state.keys.size} keys` : "No service";
    const key = this.#selectedKey();
    this.drawPanel([this.selected, key, key && state.actions.get(key.idAction), this.answer, this.moving]);
    this.log.draw();
  }

  /** @param {KeyboardEvent} event @param {any} target */
  #onKey(event, target) {
    const key = target?.item.key;
    if (!target || event.ctrlKey || event.altKey || event.metaKey)
      return;
    if (/^Arrow|^Home$|^End$/.test(event.key)) {
      this.desk.focus(this.desk.neighbor(target, event.key) ?? target);
    } else if (event.key === "Escape" && this.moving) {
      this.#startMoving(null);
    } else if (key && this.app.mayWrite() && /^[em]$|^Delete$/.test(event.key)) {
      this.#select(target.item);
      if (event.key === "e")
        this.#edit(key);
      else
        event.key === "m" ? this.#startMoving(key) : this.#delete(key);
    } else {
      return;
    }
    event.preventDefault();
  }

  /** @param {any} target */
  #activate(target) {
    if (!target)
      return;
    const place = target.item;
    this.desk.focus(target);
    if (this.moving) {
      this.#move(this.moving, place);
      return;
    }
    this.#select(place);
    if (place.onModule && this.app.mayWrite())
      this.#press(place);
    else if (!place.key && this.app.mayWrite())
      this.#edit(newKeyAt(place));
    else if (place.key)
      this.app.speak(answerText({ exists: true, key: place.key, action: this.app.state.actions.get(place.key.idAction) }));
  }

  /** @param {Spot|null} spot @param {string} answer */
  #select(spot, answer = "") {
    this.selected = spot;
    this.answer = answer;
    this.draw();
    this.#selectedElement()?.scrollIntoView({ block: "nearest" });
  }

  /** Shows the form for a key.
   * @param {Key|null} key stored or new; without one, the form asks for the place */
  #edit(key) {
    const { requests, state } = this.app;
    const isNew = !key || key.idKey < 0;
    const { form, value } = keyForm(state, key);
    const place = key ? ` at ${placeText(spotOf(key))}` : "";
    this.app.openForm(isNew ? `New key${place}` : `Edit key ${key.idKey}${place}`, form, async () => {
      const [changed, newAction] = value();
      await (isNew ? requests.createKey(changed, newAction) : requests.changeKey(changed, newAction));
      this.#select(spotOf(state.keys.get(changed.idKey) ?? changed), isNew ? "The key was created." : "The key was saved.");
    });
  }

  #selectedElement() {
    return this.selected && this.desk.elementsAt(this.selected.onModule, placeName(this.selected))[0];
  }

  #focusSelected() {
    const element = this.#selectedElement();
    if (element)
      this.desk.focus(element);
  }

  #close() {
    this.#focusSelected();
    this.#select(null);
  }

  #selectedKey() {
    return this.selected ? this.app.state.keyAt(this.selected) ?? null : null;
  }

  /** @param {Spot} spot */
  async #press(spot) {
    this.answer = NO_ANSWER_YET;
    this.draw();
    await this.app.attempt(async () => {
      const answer = await this.app.bus.press(spot);
      if (this.selected && isSamePlace(this.selected, spot))
        this.answer = answerText(answer);
      this.draw();
    });
  }

  /** @param {Key|null} key */
  #startMoving(key) {
    this.moving = key;
    this.desk.element.classList.toggle("moving", Boolean(key));
    this.answer = key ? "Select the new place: click it, or go to it with the arrow keys and press Enter. Press Escape to cancel." : "";
    this.draw();
    if (key)
      one(`[data-key-id="${key.idKey}"]`, this.desk.element)?.focus();
  }

  /** @param {Key} key @param {Spot} spot */
  async #move(key, spot) {
    this.#startMoving(null);
    await this.app.attempt(async () => {
      await this.app.requests.move(key, spot);
      this.#select(spot, `Key ${key.idKey} is now at ${placeText(spot)}.`);
    });
  }

  /** @param {Key} key */
  async #delete(key) {
    const question = `This deletes key ${key.idKey} (${placeText(spotOf(key))}), but not its action.`;
    if (await confirmed("Delete this key?", question, "Delete key"))
      await this.app.attempt(async () => {
        await this.app.requests.change("deleteProgrammableKey", key);
        this.#select(spotOf(key), `Key ${key.idKey} was deleted.`);
      });
  }

  /** Draws the panel again. The focus stays on the same button, or returns to the phone if that is gone. */
  #drawPanel() {
    const focused = this.content.contains(document.activeElement) ? document.activeElement : null;
    const { selected, app } = this;
    const key = this.#selectedKey();
    const action = key && app.state.actions.get(key.idAction);
    this.panel.classList.toggle("selected", Boolean(selected));
    one("h2", this.panel).replaceChildren(!selected ? "No key selected" : !key ? "Empty place"
      : foreign(clip(action?.label ?? "") || "(no label)"));
    one(".where", this.panel).replaceChildren(foreign(selected ? placeText(selected) : ""));
    if (this.answerLine.textContent !== this.answer) // A screen reader speaks it when it is written.
      this.answerLine.textContent = this.answer;
    this.content.replaceChildren(...(!selected ? [copyOf("hints")] : this.#details(key, selected)));
    app.applyRights();
    if (!focused)
      return;
    const same = [...this.content.querySelectorAll("button:enabled")].find((other) => other.textContent === focused.textContent);
    same ? same.focus() : this.#focusSelected();
  }

  /** @param {Key|null} key @param {Spot} selected */
  #details(key, selected) {
    const press = selected.onModule ? [button("Press", () => this.#press(selected), { writes: true, className: "primary" })] : [];
    if (!key)
      return [el("div", { className: "buttons" }, ...press, button("Create a key here", () => this.#edit(newKeyAt(selected)), { writes: true }))];
    const action = this.app.state.actions.get(key.idAction);
    const rows = {
      "Key": `${key.idKey}, ${key.dmId ? `provisioned as “${clip(key.dmId, 60)}”` : "created by a user"}`,
      "Icon": clip(key.icon, 60) || "none",
      "Action": action ? `${key.idAction}, type ${action.type}` : `${key.idAction} (does not exist)`,
      "Function": functionText(action) || "none",
      "Short label": clip(action?.shortLabel ?? "") || "none",
    };
    return [
      el("dl", {}, ...Object.entries(rows).flatMap(([name, value]) => [el("dt", {}, name), el("dd", {}, foreign(value))])),
      el("div", { className: "buttons" }, ...press,
        button("Edit", () => this.#edit(key), { writes: true }),
        button("Move", () => this.#startMoving(key), { writes: true }),
        button("Delete", () => this.#delete(key), { writes: true, className: "danger" }),
        ...(action ? [button("Edit action", () => this.app.editAction(action), { writes: true })] : [])),
    ];
  }
}
