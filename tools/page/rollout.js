// The view of a rollout: the problems of its texts, and the phone before and after it. Nothing is written.

import { Desk } from "./desk.js";
import { button, el, foreign, one, template, whenChanged } from "./dom.js";
import { planOf } from "./plan.js";
import { clip } from "./records.js";

const WAIT_MS = 400;

export class RolloutView {
  /** @param {App} app */
  constructor(app) {
    this.app = app;
    this.run = 0;
    /** @type {PlanRow[]|null} the plan */
    this.rows = null;
    this.planAgain = whenChanged(() => this.#plan());
    this.drawCounts = whenChanged(([counts, dropped]) => this.#drawCounts(counts, dropped));
    this.element = template("rollout-view");
    this.result = one(".result", this.element);
    this.stage = one("select", this.result);
    this.stage.onchange = () => this.#show();
    this.desk = new Desk("Preview of the telephone", true);
    this.result.append(this.desk.element);
    for (const area of this.element.querySelectorAll("textarea")) {
      area.oninput = () => this.#plan();
      area.ondragover = (/** @type {DragEvent} */ event) => event.preventDefault();
      area.ondrop = (/** @type {DragEvent} */ event) => this.#drop(event, area.name);
    }
  }

  draw() {
    if (!this.rows)
      return;
    const { keys, actions } = this.app.state;
    this.planAgain([...keys.values(), ...actions.values()]);
    this.#show();
  }

  /** The field for a setting, whose name is the file's or part of it.
   * @param {string} file @param {string} [name] otherwise */
  #area(file, name = "DefaultActions") {
    const setting = ["DefaultKeys", "DefaultActions"].find((known) => file.includes(known.slice("Default".length))) ?? name;
    return one(`[name=${setting}]`, this.element);
  }

  /** @param {DragEvent} event @param {string} name */
  async #drop(event, name) {
    const files = [...event.dataTransfer?.files ?? []];
    if (files.length === 0)
      return;
    event.preventDefault();
    for (const file of files)
      this.#area(file.name, name).value = (await file.text()).replace(/\n$/, "");
    this.#plan();
  }

  #plan() {
    clearTimeout(this.timer);
    this.timer = setTimeout(() => this.#ask(), WAIT_MS);
  }

  async #ask() {
    const [actions, keys] = ["DefaultActions", "DefaultKeys"].map((name) => this.#area(name).value);
    const run = ++this.run;
    if (!actions && !keys) {
      this.rows = null;
      this.result.hidden = true;
      one(".problems", this.element).replaceChildren();
      return;
    }
    try {
      const { problems, rows } = await this.app.bus.plan(actions, keys, this.app.state.limit);
      if (run !== this.run)
        return;
      this.rows = rows;
      one(".problems", this.element).replaceChildren(...(problems.length ? problems.map((problem) => this.#problem(problem))
        : [el("li", { className: "good" }, "No problems")]));
      this.#show();
    } catch (error) {
      if (run === this.run)
        this.app.refuse(error);
    }
  }

  /** @param {any} problem */
  #problem({ file, record, fieldName, character, severity, code, message }) {
    const area = this.#area(file.slice(file.lastIndexOf("/")));
    const where = [area.name, `record ${record}`, fieldName].filter(Boolean).join(", ");
    const select = button("", () => {
      // The tool counts whole characters, the browser counts halves of some.
      const start = Array.from(area.value).slice(0, character - 1).join("").length;
      const length = area.value.slice(start).search(/(?<!\\)#/);
      area.focus();
      area.setSelectionRange(start, length < 1 ? area.value.length : start + length);
    });
    select.replaceChildren(el("b", {}, `${severity}: ${where}`), el("br"), foreign(clip(message, 400)));
    return el("li", { className: severity, "data-code": code }, select);
  }

  #show() {
    const plan = planOf(this.app.state, this.rows ?? []);
    const isBefore = this.stage.value === "before";
    this.result.hidden = false;
    this.desk.draw(isBefore ? plan.before : plan.after);
    this.desk.status.textContent = isBefore ? "Before" : "After";
    this.drawCounts([plan.counts, plan.dropped]);
  }

  /** @param {Record<string, Record<string, number>>} counts @param {PlanRow[]} dropped */
  #drawCounts(counts, dropped) {
    one(".summary", this.result).replaceChildren(...Object.entries(counts).map(([kind, count]) =>
      el("div", {}, el("b", {}, kind === "key" ? "Keys: " : "Actions: "), ...Object.entries(count).sort().map(([what, number]) =>
        el("span", { className: `count mark-${what}`, "data-count": `${kind}-${what}` }, `${number} ${what}`)))));
    one(".dropped", this.result).replaceChildren(...dropped.map(({ what, kind, dmId, record, detail }) =>
      el("li", { className: "error" }, foreign(`Record ${record}: ${kind} ${clip(dmId, 60)} ${what}: ${clip(detail, 300)}`))));
  }
}
