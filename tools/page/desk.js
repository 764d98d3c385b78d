// Draws the telephone: the set with its display, and the add-on modules beside it.

import { drawList, el, foreign, one, template } from "./dom.js";
import { clip, placeName } from "./records.js";
import { KEYS_OF_MODULE, KEYS_OF_SET, spokenName } from "./units.js";

const LIT_MS = 900;
const SVG = "http://www.w3.org/2000/svg";
/** @type {Map<string, string>} other names for icons */
const ALIASES = new Map([["mail", "envelope"], ["home", "house"], ["user", "person"], ["users", "people"],
  ["group", "people"], ["warning", "bell"]]);

/** The names of the icons that have a drawing. */
export const iconNames = () => [...document.querySelectorAll(".icons symbol")].map((symbol) => symbol.id.slice("icon-".length));

/** The drawing of an icon, or its name.
 * @param {string} name */
function picture(name) {
  const id = `icon-${ALIASES.get(name) ?? name}`;
  if (!one(`.icons #${CSS.escape(id)}`))
    return el("span", { className: "icon-name" }, foreign(clip(name, 12)));
  const svg = document.createElementNS(SVG, "svg");
  svg.append(document.createElementNS(SVG, "use"));
  svg.firstElementChild?.setAttribute("href", `#${id}`);
  svg.setAttribute("aria-hidden", "true");
  return svg;
}

/** @param {string} text @param {string} title @param {string} [className] */
const badge = (text, title, className = "") => el("span", { className: `badge ${className}`, title }, text);

/** A place in a grid of two columns.
 * @typedef {Place & {row: number, column: number}} Cell */

/** @param {any} element @param {Cell} cell */
function drawPlace(element, cell) {
  const { key, display, column, row } = cell;
  const kept = element.classList.contains("lit") ? "lit" : "";
  const kind = key ? (key.dmId ? "bound provisioned" : "bound own") : "empty";
  element.className = `place ${kind} ${column === 2 ? "right" : ""} ${cell.mark && `mark-${cell.mark}`} ${kept}`;
  element.style.gridArea = `${row} / ${column}`;
  element.dataset.place = cell.place;
  delete element.dataset.keyId;
  delete element.dataset.actionId;
  if (key)
    Object.assign(element.dataset, { keyId: key.idKey, actionId: key.idAction });
  element.setAttribute("aria-label", spokenName(cell));
  element.title = cell.shown.length > 14 ? spokenName(cell) : "";
  const label = key ? foreign(cell.shown, cell.label.trim() ? "" : "none") : el("span", { className: "none" }, "+");
  element.replaceChildren(
    el("span", { className: "cap" }, key ? picture(key.icon) : ""),
    el("span", { className: "text" }, label,
      cell.isShared ? badge("shared", "Several keys are stored at this place", "warn") : "",
      display.icon ? badge(`▣ ${display.icon}`, `Icon state ${display.icon}`) : "",
      display.labelState ? badge(`Aa ${display.labelState}`, `Label state ${display.labelState}`) : "",
      cell.mark ? badge(cell.mark, "", "mark") : ""),
    el("span", { className: "number" }, String(cell.number)));
}

/** Places in blocks of two columns, as the keys of a telephone are arranged.
 * @param {Unit} unit @returns {Cell[]} */
function cellsOf({ onModule, places }) {
  const block = onModule ? KEYS_OF_MODULE : KEYS_OF_SET;
  const rows = block / 2;
  return places.map((place, index) => ({ ...place, row: Math.floor(index / block) * rows + index % rows + 1,
    column: index % block < rows ? 1 : 2 }));
}

const newSection = () => el("section", { role: "group" }, el("h3"), el("div", { className: "grid" }));
const newButton = () => el("button", { type: "button", tabIndex: -1 });
const newPicture = () => el("div", { role: "img" });

export class Desk {
  /** @param {string} name the accessible name of the whole @param {boolean} isPicture whether its keys do nothing */
  constructor(name, isPicture = false) {
    this.isPicture = isPicture;
    this.element = template("desk");
    this.element.setAttribute("aria-label", name);
    this.element.setAttribute("role", isPicture ? "group" : "toolbar");
    this.status = one(".screen-status", this.element);
    this.screen = one(".screen", this.element);
    this.modules = one(".modules", this.element);
  }

  /** @param {Unit[]} units */
  draw(units) {
    const hadFocus = this.element.contains(document.activeElement);
    for (const host of [this.screen, this.modules]) {
      const shown = units.filter(({ onModule }) => onModule === (host === this.modules));
      drawList(host, shown, ({ name }) => name, newSection, (section, unit) => this.#drawSection(section, unit));
    }
    if (this.isPicture)
      return;
    const first = one('[data-place][tabindex="0"]', this.element) ?? one("[data-place]", this.element);
    first.tabIndex = 0;
    if (hadFocus && !this.element.contains(document.activeElement))
      first.focus();
  }

  /** @param {any} section @param {Unit} unit */
  #drawSection(section, unit) {
    const title = clip(unit.name, 60) || "(no name)";
    section.className = unit.onModule ? "module" : "container";
    section.setAttribute("aria-label", title);
    one("h3", section).replaceChildren(foreign(title));
    drawList(one(".grid", section), cellsOf(unit), (cell) => cell.slot, this.isPicture ? newPicture : newButton, drawPlace);
  }

  /** Lights the keys of a module for a moment.
   * @param {string} place */
  light(place) {
    for (const element of this.elementsAt(true, place)) {
      element.classList.add("lit");
      clearTimeout(element.darken);
      element.darken = setTimeout(() => element.classList.remove("lit"), LIT_MS);
    }
  }

  /** Marks the place that the user has selected.
   * @param {Spot|null} spot */
  select(spot) {
    for (const element of this.element.querySelectorAll("[aria-current]"))
      element.removeAttribute("aria-current");
    for (const element of spot ? this.elementsAt(spot.onModule, placeName(spot)) : [])
      element.setAttribute("aria-current", "true");
  }

  /** Makes an element the one that the Tab key reaches, and focuses it.
   * @param {any} element */
  focus(element) {
    for (const other of this.element.querySelectorAll('[data-place][tabindex="0"]'))
      other.tabIndex = -1;
    element.tabIndex = 0;
    element.focus();
  }

  /** The element to which an arrow key leads.
   * @param {any} element @param {string} key @returns {any} */
  neighbor(element, key) {
    const places = [...element.parentElement.children];
    if (key === "Home" || key === "End")
      return places.at(key === "Home" ? 0 : -1);
    const isForward = key === "ArrowDown" || key === "ArrowRight";
    const beside = places.find(({ item }) => item.row === element.item.row && item.column === (isForward ? 2 : 1));
    const isSideways = key === "ArrowLeft" || key === "ArrowRight";
    if (isSideways && beside && beside !== element)
      return beside;
    const step = isForward ? 1 : -1;
    const grids = [...this.element.querySelectorAll(".grid")];
    return (!isSideways && places[places.indexOf(element) + step]) || grids[grids.indexOf(element.parentElement) + step]?.children[0];
  }

  /** @param {boolean} onModule @param {string} place @returns {any[]} */
  elementsAt(onModule, place) {
    return [...(onModule ? this.modules : this.screen).querySelectorAll(`[data-place="${CSS.escape(place)}"]`)];
  }
}
