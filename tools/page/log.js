// The log of events. Only the rows that are new are drawn.

import { button, el, foreign } from "./dom.js";
import { clip } from "./state.js";

const LONGEST_ROW = 1500;

export class LogView {
  /** @param {import("./app.js").App} app */
  constructor(app) {
    this.app = app;
    this.isPaused = false;
    /** @type {import("./state.js").LogEntry[]} the log as it was at the pause */
    this.paused = [];
    /** @type {import("./state.js").LogEntry[]} the entries that are shown */
    this.entries = [];
    this.filter = el("input", { type: "search", placeholder: "Filter", "aria-label": "Filter events", oninput: () => this.draw(true) });
    this.pause = el("button", { type: "button", "aria-pressed": "false", onclick: () => this.#toggle() }, "Pause");
    this.rows = el("ol", { className: "rows", tabIndex: 0, "aria-label": "Events" });
    this.count = el("span", { className: "counts" });
    this.element = el("section", { className: "log", "aria-label": "Log of events" },
      el("div", { className: "toolbar" }, el("h2", {}, "Events"), this.count, this.filter, this.pause,
        button("Copy as JSON", () => this.#copy())), this.rows);
  }

  draw(always = false) {
    if (this.isPaused && !always)
      return;
    const entries = this.app.state.logWith(this.filter.value, this.isPaused ? this.paused : undefined);
    this.count.textContent = String(entries.length);
    const first = entries[0]?.number ?? Infinity;
    const newest = this.entries.at(-1)?.number ?? 0;
    if (always)
      this.rows.replaceChildren();
    while (this.rows.lastElementChild && Number(this.rows.lastElementChild.value) < first)
      this.rows.lastElementChild.remove();
    const fresh = always ? entries : entries.filter((entry) => entry.number > newest);
    this.rows.prepend(...fresh.map((entry) => this.#row(entry)).reverse());
    this.entries = entries.slice();
  }

  #toggle() {
    this.isPaused = !this.isPaused;
    this.paused = this.isPaused ? this.app.state.log.slice() : [];
    this.pause.setAttribute("aria-pressed", String(this.isPaused));
    this.pause.textContent = this.isPaused ? "Resume" : "Pause";
    if (!this.isPaused)
      this.draw(true);
  }

  /** @param {import("./state.js").LogEntry} entry */
  #row(entry) {
    return el("li", { value: entry.number, "data-event": entry.event }, el("time", {}, entry.time.slice(11, 23)),
      el("b", {}, foreign(clip(entry.event, 80))), foreign(clip(entry.text, LONGEST_ROW), "arguments"));
  }

  async #copy() {
    const entries = this.entries.map(({ time, event, module, arguments: values }) => ({ time, event, module, arguments: values }));
    const text = JSON.stringify(entries, null, 2);
    try {
      await navigator.clipboard.writeText(text);
    } catch {
      const area = el("textarea", { value: text });
      document.body.append(area);
      area.select();
      document.execCommand("copy");
      area.remove();
    }
    this.app.say(`${entries.length} events copied.`);
  }
}
