// The page: it connects the bus with the state, and the state with the views.

import { ActionsView } from "./actions.js";
import { Bus } from "./bus.js";
import { button, confirmed, el, foreign, openDialog } from "./dom.js";
import { actionForm, keyNames } from "./forms.js";
import { LabelsView } from "./labels.js";
import { PhoneView } from "./phone.js";
import { Requests } from "./requests.js";
import { RolloutView } from "./rollout.js";
import { State, clip } from "./state.js";
import { errorText } from "./texts.js";

/** @typedef {import("./state.js").Action} Action */

const READ_AGAIN_MS = 1500; // Moves are not announced as events, so the keys are read again and again.
const MOST_STALE_READS = 5;
const DRAW_AFTER_MS = 40;
const SAYING_MS = 4000;
const SERVICE_TEXTS = { waiting: "Connecting…", running: "Connected", gone: "The service is not running",
  lost: "The connection to the bus is lost" };

export class App {
  constructor() {
    this.state = new State();
    this.status = el("p", { className: "service", role: "status" });
    this.notice = el("div", { className: "notice", role: "status", hidden: true });
    this.messages = el("div", { className: "messages" });
    this.saying = el("p", { className: "saying", role: "status" });
    this.main = el("main", {});
    this.hasOwner = false;
    this.isReading = false;
    this.isDrawPlanned = false;
    this.bus = new Bus({
      onOwner: (isThere) => this.#takeOwner(isThere),
      onEvent: (event) => this.#take(event),
      onForeignEvent: (event) => {
        this.state.note(event, now());
        this.planDrawing();
      },
      onLost: () => this.#leave("lost"),
    });
    this.requests = new Requests(this.state, this.bus, () => this.refresh());
    this.views = /** @type {Record<string, any>} */ ({ "#/phone": new PhoneView(this), "#/actions": new ActionsView(this),
      "#/rollout": new RolloutView(this), "#/labels": new LabelsView(this) });
    document.body.append(this.#header(), this.notice, this.messages, this.main, this.saying);
    window.addEventListener("hashchange", () => this.#route());
    document.addEventListener("visibilitychange", () => this.#readAgain());
    this.#route();
    this.#readAgain();
  }

  #header() {
    const titles = { "#/phone": "Phone", "#/actions": "Actions", "#/rollout": "Rollout", "#/labels": "Labels" };
    this.links = Object.entries(titles).map(([href, title]) => el("a", { href }, title));
    return el("header", {}, el("h1", {}, "Programmable keys"), el("nav", { "aria-label": "Views" }, ...this.links), this.status);
  }

  #route() {
    const name = Object.hasOwn(this.views, location.hash) ? location.hash : "#/phone";
    this.view = this.views[name];
    for (const link of this.links ?? [])
      link.getAttribute("href") === name ? link.setAttribute("aria-current", "page") : link.removeAttribute("aria-current");
    this.main.replaceChildren(this.view.element);
    this.draw();
  }

  draw() {
    this.isDrawPlanned = false;
    this.status.textContent = SERVICE_TEXTS[this.state.service];
    this.status.className = `service ${this.state.service}`;
    document.body.classList.toggle("away", this.state.service !== "running");
    this.#drawNotice();
    this.view.draw();
    this.applyRights();
  }

  /** Draws soon: once for many events. */
  planDrawing() {
    if (!this.isDrawPlanned)
      setTimeout(() => requestAnimationFrame(() => this.draw()), DRAW_AFTER_MS);
    this.isDrawPlanned = true;
  }

  mayWrite() {
    return this.state.mayWrite && this.state.service === "running";
  }

  /** Disables the controls that cannot work. */
  applyRights() {
    for (const control of document.querySelectorAll("[data-writes]"))
      /** @type {any} */ (control).disabled = !this.mayWrite();
  }

  #drawNotice() {
    const { service, mayWrite } = this.state;
    const text = service === "gone" || service === "lost"
      ? `${SERVICE_TEXTS[service]}. What you see was read before. The page continues when it returns.`
      : !mayWrite && !this.hasDismissed
        ? "You can look at everything, but not change or press keys or receive events: you are not a member of the group " +
          "progkeys-admin. Ask an administrator to add you to it, then log in again."
        : "";
    this.notice.hidden = !text;
    if (this.notice.dataset.text === text)
      return;
    this.notice.dataset.text = text;
    this.notice.replaceChildren(text, ...(service === "running" ? [button("Close", () => {
      this.hasDismissed = true;
      this.draw();
    })] : []));
  }

  // The service

  /** @param {boolean} isThere */
  #takeOwner(isThere) {
    this.hasOwner = isThere;
    if (!isThere)
      this.#leave("gone");
    else
      this.#arrive().catch((error) => this.hasOwner && this.refuse(error));
  }

  async #arrive() {
    this.state.mayWrite = await this.bus.mayWrite();
    if (this.state.mayWrite)
      this.bus.hearPresses();
    await this.refresh();
  }

  /** @param {"gone"|"lost"} how */
  #leave(how) {
    this.hasOwner = false;
    this.state.leave();
    this.state.service = how;
    this.draw();
  }

  /** @param {import("./state.js").Event} event */
  #take(event) {
    this.state.take(event, now());
    if (event.event === "DB_RESET_NTF")
      this.refresh().catch((error) => this.refuse(error));
    if (event.event === "KO_PROGKEYS_DB_FULL")
      this.bus.limit().then((limit) => { this.state.limit = limit; });
    this.planDrawing();
  }

  async refresh() {
    this.state.limit = await this.bus.limit();
    await this.#read();
  }

  /** Reads keys and actions. Events that arrive meanwhile are newer than what is read: then it is read again. */
  async #read() {
    for (let stale = 0; stale <= MOST_STALE_READS; ++stale) {
      const changes = this.state.changeCount;
      const [keys, actions] = await Promise.all([this.bus.allKeys(), this.bus.allActions()]);
      if (changes !== this.state.changeCount && stale < MOST_STALE_READS)
        continue;
      this.state.read(keys, actions);
      break;
    }
    this.draw();
  }

  async #readAgain() {
    if (this.isReading || document.hidden)
      return;
    this.isReading = true;
    const start = performance.now();
    if (this.hasOwner) // If the service has gone, that is announced. If it did not answer, it is asked again.
      await (this.state.service === "running" ? this.#read() : this.#arrive()).catch(() => {});
    setTimeout(() => {
      this.isReading = false;
      this.#readAgain();
    }, Math.max(READ_AGAIN_MS, 10 * (performance.now() - start)));
  }

  // Requests of the user

  /** Carries out a request, and tells why if it is refused.
   * @param {() => Promise<any>} request */
  async attempt(request) {
    this.messages.replaceChildren();
    try {
      await request();
    } catch (error) {
      this.refuse(error);
    }
  }

  /** Tells why a request failed, above a dialog if one is open. The text stays until the next request.
   * @param {any} error */
  refuse(error) {
    (document.querySelector("dialog[open]") ?? document.body).append(this.messages);
    const focused = /** @type {HTMLElement|null} */ (document.activeElement);
    const message = el("div", { className: "alert", role: "alert" }, foreign(errorText(error)), button("Close", () => {
      message.remove();
      focused?.focus();
    }));
    this.messages.replaceChildren(message);
  }

  /** @param {string} text */
  say(text) {
    this.saying.textContent = text;
    setTimeout(() => this.saying.textContent === text && (this.saying.textContent = ""), SAYING_MS);
  }

  /** @param {Action|null} action */
  editAction(action) {
    const dialog = openDialog(action ? `Edit action ${action.idAction}` : "New action", actionForm({
      action,
      cancel: () => dialog.close(),
      refuse: (error) => this.refuse(error),
      save: async (value) => {
        await (action ? this.requests.changeAction(value) : this.requests.addAction(value));
        await this.refresh();
        this.messages.replaceChildren();
        dialog.close();
        this.say(action ? "The action was saved." : "The action was created.");
      },
    }));
  }

  /** @param {Action} action */
  async deleteAction(action) {
    const keys = this.state.keysOf(action.idAction);
    const what = keys.length ? `This also deletes ${keys.length === 1 ? "its key" : `its ${keys.length} keys`}: ${keyNames(keys)}.` : "No key is bound to it.";
    const content = [el("p", {}, foreign(clip(action.label) || "(no label)")), el("p", { className: "names" }, foreign(clip(what, 2000)))];
    if (await confirmed(`Delete action ${action.idAction}?`, content, "Delete action"))
      await this.attempt(() => this.requests.deleteAction(action));
  }
}

const now = () => new Date(Date.now() - new Date().getTimezoneOffset() * 60000).toISOString().slice(0, 23);

document.documentElement.dataset.theme = localStorage.getItem("shell:style") ?? "auto";
/** @type {any} */ (window).app = new App();
