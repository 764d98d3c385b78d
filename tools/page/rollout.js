// The view of a rollout: the problems of its texts, and the phone before and after it. Nothing is written.

import { Desk } from "./desk.js";
import { el, foreign, whenChanged } from "./dom.js";
import { clip, planOf } from "./state.js";

const WAIT_MS = 400;

export class RolloutView {
  /** @param {import("./app.js").App} app */
  constructor(app) {
    this.app = app;
    this.run = 0;
    /** @type {any[]|null} the plan */
    this.rows = null;
    this.planAgain = whenChanged(() => this.#plan());
    this.actions = this.#input("DefaultActions");
    this.keys = this.#input("DefaultKeys");
    this.problems = el("ol", { className: "problems", "aria-label": "Problems" });
    this.summary = el("div", { className: "summary", role: "status" });
    this.dropped = el("ul", { className: "problems" });
    this.desk = new Desk("Telephone of the rollout");
    this.desk.element.classList.add("still");
    this.stage = el("select", { "aria-label": "Phone before or after the rollout", onchange: () => this.#show() },
      el("option", { value: "after" }, "After the rollout"), el("option", { value: "before" }, "Before the rollout"));
    this.result = el("div", { className: "result", hidden: true },
      el("div", { className: "toolbar" }, this.stage, this.summary), this.dropped, this.desk.element);
    this.element = el("div", { className: "page" }, el("h2", {}, "Try a rollout"),
      el("p", { className: "hint" }, "Paste or drop DefaultActions and DefaultKeys. A text that you leave empty is read from the phone. Nothing is written."),
      el("div", { className: "texts" }, this.actions.element, this.keys.element,
        el("div", { className: "field" }, el("span", {}, "Problems"), this.problems)), this.result);
  }

  draw() {
    if (!this.rows)
      return;
    const { keys, actions } = this.app.state;
    this.planAgain([...keys.values(), ...actions.values()]);
    this.#show();
  }

  /** @param {string} name */
  #input(name) {
    const area = el("textarea", { name, spellcheck: false, placeholder: `Paste ${name}, or drop the file here` });
    area.addEventListener("input", () => this.#plan());
    area.addEventListener("dragover", (/** @type {DragEvent} */ event) => event.preventDefault());
    area.addEventListener("drop", (/** @type {DragEvent} */ event) => this.#drop(event, name));
    return { area, element: el("label", { className: "field" }, el("span", {}, name), area) };
  }

  /** @param {DragEvent} event @param {string} name */
  async #drop(event, name) {
    const files = [...event.dataTransfer?.files ?? []];
    if (files.length === 0)
      return;
    event.preventDefault();
    for (const file of files) {
      const isKeys = file.name.includes("Keys") || (!file.name.includes("Actions") && name === "DefaultKeys");
      const text = await file.text();
      (isKeys ? this.keys : this.actions).area.value = text.replace(/\n$/, "");
    }
    this.#plan();
  }

  #plan() {
    clearTimeout(this.timer);
    this.timer = setTimeout(() => this.#ask(), WAIT_MS);
  }

  async #ask() {
    const texts = [this.actions.area.value, this.keys.area.value];
    const run = ++this.run;
    if (!texts.some(Boolean)) {
      this.rows = null;
      this.result.hidden = true;
      this.problems.replaceChildren();
      return;
    }
    try {
      const { problems, rows } = await this.app.bus.plan(texts[0], texts[1], this.app.state.limit);
      if (run !== this.run)
        return;
      this.rows = rows;
      this.#showProblems(problems);
      this.#show();
    } catch (error) {
      if (run === this.run)
        this.app.refuse(error);
    }
  }

  /** @param {any[]} problems */
  #showProblems(problems) {
    this.problems.replaceChildren(...problems.map((problem) => this.#problem(problem)));
    if (problems.length === 0)
      this.problems.replaceChildren(el("li", { className: "good" }, "No problems."));
  }

  /** @param {any} problem */
  #problem(problem) {
    const name = problem.file.endsWith("DefaultKeys") ? "DefaultKeys" : "DefaultActions";
    const area = (name === "DefaultKeys" ? this.keys : this.actions).area;
    const where = [name, `record ${problem.record}`, problem.fieldName].filter(Boolean).join(", ");
    const go = () => {
      // The tool counts whole characters, the browser counts halves of some.
      const start = Array.from(area.value).slice(0, problem.character - 1).join("").length;
      const length = area.value.slice(start).search(/(?<!\\)#/);
      area.focus();
      area.setSelectionRange(start, length < 1 ? area.value.length : start + length);
    };
    return el("li", { className: problem.severity, "data-code": problem.code },
      el("button", { type: "button", onclick: go }, el("b", {}, `${problem.severity}: ${where}`), el("br"), foreign(clip(problem.message, 400))));
  }

  #show() {
    const plan = planOf(this.app.state, this.rows ?? []);
    this.result.hidden = false;
    this.desk.draw(this.stage.value === "before" ? plan.before : plan.after);
    this.desk.status.textContent = this.stage.value === "before" ? "Before" : "After";
    this.summary.replaceChildren(...["action", "key"].map((kind) => el("div", {}, el("b", {}, kind === "key" ? "Keys: " : "Actions: "),
      ...Object.entries(plan.counts[kind]).map(([what, count]) =>
        el("span", { className: `count mark-${what}`, "data-count": `${kind}-${what}` }, `${count} ${what}`)))));
    this.dropped.replaceChildren(...plan.dropped.map((row) => el("li", { className: "error" },
      foreign(`${row.what}: ${row.kind}${row.dmId ? ` ${clip(row.dmId, 60)}` : ""}, record ${row.record}: ${clip(row.detail, 300)}`))));
  }
}
