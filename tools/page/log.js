// The log of events.

import { drawList, el, foreign, one } from "./dom.js";
import { matching } from "./events.js";
import { clip } from "./records.js";

const LONGEST_ROW = 800;

/** @param {any} row @param {LogEntry} entry */
function drawRow(row, entry) {
  row.dataset.event = entry.event;
  row.replaceChildren(el("time", {}, entry.time.slice(11, 23)), el("b", {}, foreign(clip(entry.event, 80))),
    foreign(clip(entry.text, LONGEST_ROW), "arguments"));
}

export class LogView {
  /** @param {App} app @param {any} element */
  constructor(app, element) {
    this.app = app;
    this.element = element;
    this.isPaused = false;
    /** @type {LogEntry[]} the log, as it was at a pause */
    this.log = [];
    /** @type {LogEntry[]} */
    this.shown = [];
    this.filter = one("input", element);
    this.filter.oninput = () => this.draw();
    one(".pause", element).onclick = () => this.#toggle();
    one(".copy", element).onclick = () => this.#copy();
  }

  draw() {
    if (!this.isPaused)
      this.log = this.app.state.log.slice();
    this.shown = matching(this.log, this.filter.value);
    one(".counts", this.element).textContent = String(this.shown.length);
    drawList(one(".rows", this.element), [...this.shown].reverse(), ({ number }) => number, () => el("li"), drawRow);
  }

  #toggle() {
    this.isPaused = !this.isPaused;
    one(".pause", this.element).setAttribute("aria-pressed", this.isPaused);
    this.draw();
  }

  async #copy() {
    const entries = this.shown.map(({ time, event, module, arguments: values }) => ({ time, event, module, arguments: values }));
    const text = JSON.stringify(entries, null, 2);
    if (await this.app.attempt(() => navigator.clipboard.writeText(text)))
      this.app.say(`Copied ${entries.length} ${entries.length === 1 ? "event" : "events"}.`);
  }
}
