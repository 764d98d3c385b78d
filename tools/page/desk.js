// Draws the telephone: the set with its display, and the add-on modules beside it. Elements are kept
// and changed, so that the focus stays and large phones are drawn quickly.

import { arrange, el, foreign } from "./dom.js";
import { drawing } from "./icons.js";
import { KEYS_OF_MODULE, KEYS_OF_SET, clip, spokenName } from "./state.js";

/** @typedef {import("./state.js").Unit} Unit @typedef {import("./state.js").Place} Place */

const LIT_MS = 900;

/** The parts of a telephone that do nothing here. */
function handset() {
  return el("div", { className: "handset", "aria-hidden": "true" },
    el("div", { className: "receiver" }, el("i"), el("b"), el("i")), el("div", { className: "cord" }));
}

function dialPad() {
  const digits = ["1", "2", "3", "4", "5", "6", "7", "8", "9", "*", "0", "#"];
  const letters = ["", "abc", "def", "ghi", "jkl", "mno", "pqrs", "tuv", "wxyz", "", "", ""];
  return el("div", { className: "controls", "aria-hidden": "true" },
    el("div", { className: "volume" }, el("i", {}, "–"), el("i", {}, "+")),
    el("div", { className: "pad" }, ...digits.map((digit, index) => el("i", {}, digit, el("small", {}, letters[index])))),
    el("div", { className: "cross" }, el("i"), el("i"), el("b"), el("i"), el("i")));
}

/** @param {Place} place */
function contentOf(place) {
  const icon = place.key?.icon ?? "";
  const picture = place.key ? drawing(icon) ?? el("span", { className: "icon-name" }, foreign(clip(icon, 12))) : null;
  const { icon: iconState, labelState } = place.display;
  return [
    el("span", { className: "cap" }, picture),
    el("span", { className: "text" }, place.key ? foreign(place.shown, place.label.trim() ? "" : "none") : el("span", { className: "none" }, "+"),
      place.isShared && el("span", { className: "badge warn", title: "Several keys have this place" }, "shared"),
      iconState && el("span", { className: "badge", title: `Icon state ${iconState}` }, `▣ ${iconState}`),
      labelState && el("span", { className: "badge", title: `Label state ${labelState}` }, `Aa ${labelState}`),
      place.mark && el("span", { className: "badge mark" }, place.mark)),
    el("span", { className: "number" }, String(place.number)),
  ];
}

/** @param {any} element @param {Place} place */
function drawPlace(element, place) {
  const { key } = place;
  const kept = ["chosen", "lit"].filter((name) => element.classList.contains(name));
  element.className = [...kept, "place", key ? "bound" : "empty", key && (key.dmId ? "provisioned" : "own"),
    place.mark && `mark-${place.mark}`].filter(Boolean).join(" ");
  element.dataset.place = place.place;
  element.setAttribute("aria-label", spokenName(place));
  element.title = place.shown.length > 14 ? spokenName(place) : "";
  for (const [name, value] of [["keyId", key?.idKey], ["actionId", key?.idAction]])
    value === undefined ? delete element.dataset[name ?? ""] : (element.dataset[name ?? ""] = String(value));
  element.replaceChildren(...contentOf(place));
}

export class Desk {
  /** @param {string} name the accessible name of the whole */
  constructor(name) {
    /** @type {Map<string, {section: any, grid: any, places: Map<string, any>}>} */
    this.sections = new Map();
    /** @type {WeakMap<Element, Place>} */
    this.placeOf = new WeakMap();
    this.status = el("div", { className: "screen-status" });
    this.screen = el("div", { className: "screen" });
    this.set = el("div", { className: "set" }, handset(),
      el("div", { className: "face" }, el("div", { className: "bezel" }, this.status, this.screen), dialPad()));
    this.modules = el("div", { className: "modules" });
    this.element = el("div", { className: "desk", role: "group", "aria-label": name }, this.set, this.modules);
  }

  /** @param {Unit[]} units */
  draw(units) {
    const drawn = units.map((unit) => ({ unit, ...this.#section(unit) }));
    const names = new Set(units.map((unit) => `${unit.onModule} ${unit.name}`));
    for (const name of this.sections.keys())
      names.has(name) || this.sections.delete(name);
    arrange(this.screen, drawn.filter(({ unit }) => !unit.onModule).map(({ section }) => section));
    arrange(this.modules, drawn.filter(({ unit }) => unit.onModule).map(({ section }) => section));
    if (!this.element.querySelector('[data-place][tabindex="0"]'))
      this.element.querySelector("[data-place]")?.setAttribute("tabindex", "0");
  }

  /** Lights the keys of a module for a moment.
   * @param {string} place */
  light(place) {
    for (const element of this.elementsAt(place, true)) {
      element.classList.add("lit");
      clearTimeout(element.darken);
      element.darken = setTimeout(() => element.classList.remove("lit"), LIT_MS);
    }
  }

  /** Marks the place that the user has chosen.
   * @param {{place: string, onModule: boolean}|null} chosen */
  choose(chosen) {
    for (const element of this.element.querySelectorAll(".chosen"))
      element.classList.remove("chosen");
    for (const element of chosen ? this.elementsAt(chosen.place, chosen.onModule) : [])
      element.classList.add("chosen");
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
  neighbour(element, key) {
    const places = [...element.parentElement.children];
    if (key === "Home" || key === "End")
      return places.at(key === "Home" ? 0 : -1);
    const forward = key === "ArrowDown" || key === "ArrowRight";
    const beside = places.find((other) => other.style.gridRow === element.style.gridRow &&
      other.style.gridColumn === (forward ? "2" : "1"));
    const isSideways = key === "ArrowLeft" || key === "ArrowRight";
    const next = isSideways ? (beside === element ? null : beside) : places[places.indexOf(element) + (forward ? 1 : -1)];
    if (next)
      return next;
    const grids = [...this.element.querySelectorAll(".grid")];
    return grids[grids.indexOf(element.parentElement) + (forward ? 1 : -1)]?.children[0];
  }

  /** @param {string} place @param {boolean} onModule @returns {any[]} */
  elementsAt(place, onModule) {
    return [...(onModule ? this.modules : this.screen).querySelectorAll(`[data-place="${CSS.escape(place)}"]`)];
  }

  /** @param {Unit} unit */
  #section(unit) {
    const name = `${unit.onModule} ${unit.name}`;
    const title = clip(unit.name, 60) || "(no name)";
    const known = this.sections.get(name) ?? this.#newSection(unit, title);
    this.sections.set(name, known);
    this.#drawPlaces(known, unit.places, unit.onModule ? KEYS_OF_MODULE : KEYS_OF_SET);
    return known;
  }

  /** @param {Unit} unit @param {string} title */
  #newSection(unit, title) {
    const grid = el("div", { className: "grid" });
    const section = el("section", { className: unit.onModule ? "module" : "container", "aria-label": title },
      el("h3", {}, foreign(title)), grid);
    return { section, grid, places: new Map() };
  }

  /** Draws blocks of two columns, as the keys of a telephone are arranged.
   * @param {{grid: any, places: Map<string, any>}} section @param {Place[]} places @param {number} block */
  #drawPlaces(section, places, block) {
    const before = section.places;
    section.places = new Map();
    const rows = block / 2;
    const elements = places.map((place, index) => {
      let name = `${place.number}`;
      while (section.places.has(name))
        name += "+";
      const element = before.get(name) ?? el("button", { type: "button", tabIndex: -1 });
      const isRight = index % block >= rows;
      const content = `${index} ${JSON.stringify(place)}`;
      if (element.content !== content) {
        drawPlace(element, place);
        element.classList.toggle("right", isRight);
        element.style.gridRow = String(Math.floor(index / block) * rows + index % rows + 1);
        element.style.gridColumn = isRight ? "2" : "1";
      }
      element.content = content;
      section.places.set(name, element);
      this.placeOf.set(element, place);
      return element;
    });
    arrange(section.grid, elements);
  }
}
