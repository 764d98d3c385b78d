// The page: it connects the bus with the state, and the state with the views.

import { ActionsView } from "./actions.js";
import { Bus } from "./bus.js";
import { button, confirmed, el, foreign, one, openDialog, whenChanged } from "./dom.js";
import { actionForm } from "./forms.js";
import { LabelsView } from "./labels.js";
import { PhoneView } from "./phone.js";
import { clip, placeText, spotOf } from "./records.js";
import { Requests } from "./requests.js";
import { RolloutView } from "./rollout.js";
import { State } from "./state.js";
import { errorText } from "./texts.js";

const READ_AGAIN_MS = 1500; // The service announces no moves, so the page reads all keys repeatedly.
const MOST_STALE_READS = 5;
const DRAW_AFTER_MS = 40;
const SAYING_MS = 4000;
const SERVICE_TEXTS = { waiting: "Connecting…", running: "Connected", gone: "The service is not running",
  lost: "The connection to the bus is lost" };
const READ_ONLY = "You have read-only access, because you are not a member of the group progkeys-admin. You cannot change or " +
  "press keys, and you do not receive events. To get access, ask an administrator to add you to the group, then log in again.";

export class App {
  constructor() {
    this.state = new State();
    this.main = one("main");
    this.messages = one(".messages");
    this.hasOwner = false;
    this.isDrawPlanned = false;
    this.drawNotice = whenChanged(([text, mayClose]) => one(".notice").replaceChildren(text, ...(mayClose
      ? [button("Close", () => this.#closeNotice())] : [])));
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
    window.addEventListener("hashchange", () => {
      this.#route();
      this.main.focus();
    });
    this.#route();
    this.#readAgain();
  }

  #route() {
    const name = Object.hasOwn(this.views, location.hash) ? location.hash : "#/phone";
    this.view = this.views[name];
    one("nav a[aria-current]")?.removeAttribute("aria-current");
    const link = one(`nav a[href="${name}"]`);
    link.setAttribute("aria-current", "page");
    this.main.setAttribute("aria-label", link.textContent);
    this.main.replaceChildren(this.view.element);
    this.draw();
  }

  draw() {
    const { service, mayWrite } = this.state;
    const isAway = service === "gone" || service === "lost";
    this.isDrawPlanned = false;
    Object.assign(one(".service"), { className: `service ${service}`, textContent: SERVICE_TEXTS[service] });
    document.body.classList.toggle("away", service !== "running");
    const notice = isAway ? `${SERVICE_TEXTS[service]}. The page shows the last known state. It reconnects automatically.`
      : mayWrite || this.hasClosedNotice ? "" : READ_ONLY;
    this.drawNotice([notice, notice === READ_ONLY]);
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

  #closeNotice() {
    this.hasClosedNotice = true;
    this.draw();
    this.main.focus();
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
    this.speak(SERVICE_TEXTS.running);
  }

  /** @param {"gone"|"lost"} how */
  #leave(how) {
    this.hasOwner = false;
    this.state.leave(how);
    this.draw();
  }

  /** @param {PhoneEvent} event */
  #take(event) {
    this.state.take(event, now());
    if (event.event === "DB_RESET_NTF" || event.event === "KO_PROGKEYS_DB_FULL")
      this.refresh().catch((error) => this.refuse(error));
    this.planDrawing();
  }

  async refresh() {
    this.state.limit = await this.bus.limit();
    await this.#read();
  }

  /** Reads keys and actions. Events that arrive meanwhile are newer than what is read: then it is read again. */
  async #read() {
    let changes;
    let stale = 0;
    let records;
    do {
      changes = this.state.changeCount;
      records = await this.bus.readAll();
    } while (changes !== this.state.changeCount && stale++ < MOST_STALE_READS);
    this.state.read(...records);
    this.draw();
  }

  /** Reads everything repeatedly. A service that did not answer is asked again. */
  async #readAgain() {
    const start = performance.now();
    if (this.hasOwner && !document.hidden)
      await (this.state.service === "running" ? this.#read() : this.#arrive()).catch(() => {});
    setTimeout(() => this.#readAgain(), Math.max(READ_AGAIN_MS, 10 * (performance.now() - start)));
  }

  // Requests of the user

  /** Carries out a request, or shows why it failed.
   * @param {() => Promise<any>} request @returns {Promise<boolean>} whether it was carried out */
  async attempt(request) {
    this.messages.replaceChildren();
    try {
      await request();
      return true;
    } catch (error) {
      return this.refuse(error);
    }
  }

  /** Shows a form in a dialog until its request is carried out.
   * @param {string} title @param {any} form @param {() => Promise<any>} request */
  openForm(title, form, request) {
    const dialog = openDialog(title, form);
    let isBusy = false;
    one(".cancel", form).onclick = () => dialog.close();
    form.onsubmit = async (/** @type {SubmitEvent} */ event) => {
      event.preventDefault();
      if (isBusy)
        return;
      isBusy = true;
      if (await this.attempt(request))
        dialog.close();
      isBusy = false;
    };
    this.applyRights();
  }

  /** Shows why a request failed, in the dialog if one is open. The text stays until the next request.
   * @param {any} error */
  refuse(error) {
    (one("dialog[open]") ?? document.body).append(this.messages);
    const focused = /** @type {HTMLElement|null} */ (document.activeElement);
    const message = el("div", { className: "alert", role: "alert" }, foreign(errorText(error)), button("Close", () => {
      message.remove();
      focused?.focus();
    }));
    this.messages.replaceChildren(message);
    return false;
  }

  /** Shows a text for a moment.
   * @param {string} text */
  say(text, place = one(".saying")) {
    place.textContent = text;
    clearTimeout(place.timer);
    place.timer = setTimeout(() => { place.textContent = ""; }, SAYING_MS);
  }

  /** Announces to screen readers what others see elsewhere on the page.
   * @param {string} text */
  speak(text) {
    this.say(text, one(".spoken"));
  }

  /** @param {Action|null} action */
  editAction(action) {
    const { form, value } = actionForm(action);
    this.openForm(action ? `Edit action ${action.idAction}` : "New action", form, async () => {
      await this.requests.change(action ? "modifyAction" : "addAction", value());
      this.say(action ? "The action was saved." : "The action was created.");
    });
  }

  /** @param {Action} action */
  async deleteAction(action) {
    const keys = [...this.state.keys.values()].filter(({ idAction }) => idAction === action.idAction);
    const names = keys.map((key) => `key ${key.idKey} (${placeText(spotOf(key))})`).join(", ");
    const question = `This deletes “${clip(action.label) || "(no label)"}”` + (keys.length === 0 ? ". No keys are bound to it."
      : ` and ${keys.length === 1 ? "its key" : `its ${keys.length} keys`}: ${names}.`);
    if (await confirmed(`Delete action ${action.idAction}?`, clip(question, 2000), "Delete action"))
      await this.attempt(async () => {
        await this.requests.change("deleteAction", action);
        this.say("The action was deleted.");
      });
  }
}

const now = () => new Date(Date.now() - new Date().getTimezoneOffset() * 60000).toISOString().slice(0, 23);

const applyTheme = () => { document.documentElement.dataset.theme = localStorage.getItem("shell:style") ?? "auto"; };
window.addEventListener("storage", applyTheme);
applyTheme();
/** @type {any} */ (window).app = new App();
