// Drawings for the common names of icons, on a field of 24 by 24.

const PATHS = {
  envelope: "M3 6h18v12H3z M3 7l9 7 9-7",
  hand: "M8 13V6a1.5 1.5 0 0 1 3 0v5V4.500a1.5 1.5 0 0 1 3 0V11V6a1.500 1.500 0 0 1 3 0v8c0 4-2 6-5 6-4 0-5-2-8-7a1.400 1.400 0 0 1 2.400-1.200z",
  book: "M5 4h11a3 3 0 0 1 3 3v13H8a3 3 0 0 1-3-3z M5 17a3 3 0 0 1 3-3h11 M9 8h6",
  clock: "M12 3a9 9 0 1 0 .01 0z M12 7v5l4 2",
  arrow: "M4 17c0-6 4-8 9-8h6 M15 5l5 4-5 4",
  moon: "M19 14.500A8 8 0 1 1 9.500 5a6.500 6.500 0 0 0 9.500 9.500z",
  "car-park": "M5 3h14v18H5z M10 17V7h3a3 3 0 0 1 0 6h-3",
  people: "M9 5a3 3 0 1 0 .01 0z M3 19c0-4 2.500-6 6-6s6 2 6 6 M16 6a2.500 2.500 0 1 1 .5 5 M17 13.500c2.500.5 4 2.500 4 5.500",
  person: "M12 4a4 4 0 1 0 .01 0z M5 20c0-4.500 3-6.500 7-6.500s7 2 7 6.500",
  bell: "M6 16V11a6 6 0 0 1 12 0v5l2 2H4z M10 20.500h4 M12 5V3",
  door: "M6 21V3h12v18 M3 21h18 M14.500 12h.01",
  shield: "M12 3l7 3v5c0 5-3 8-7 10-4-2-7-5-7-10V6z M9 12l2 2 4-4",
  laptop: "M5 5h14v10H5z M2 19h20",
  tools: "M14 6a4 4 0 0 1 5-2l-2.500 2.500 1 1L20 5a4 4 0 0 1-5.500 5L7 18l-2-2z M5 4l4 4 M15 14l5 5",
  parcel: "M4 8l8-4 8 4v9l-8 4-8-4z M4 8l8 4 8-4 M12 12v9",
  cup: "M5 8h11v6a5 5 0 0 1-5 5h-1a5 5 0 0 1-5-5z M16 9h2a2.500 2.500 0 0 1 0 5h-2 M8 3v2 M12 3v2",
  cross: "M9 4h6v5h5v6h-5v5H9v-5H4V9h5z",
  car: "M4 16v-4l2-5h12l2 5v4z M7 16v2 M17 16v2 M4 12h16 M7.500 14h.01 M16.500 14h.01",
  plane: "M21 4L3 11l6 3 3 6z M9 14l5-4",
  table: "M3 9h18 M5 9v10 M19 9v10 M8 9l1-4h6l1 4",
  horn: "M4 10v4h3l9 5V5l-9 5z M19 9a4 4 0 0 1 0 6",
  globe: "M12 3a9 9 0 1 0 .01 0z M3 12h18 M12 3c3 3 3 15 0 18 M12 3c-3 3-3 15 0 18",
  star: "M12 3l2.700 6 6.300.600-4.800 4.300L17.600 21 12 17.500 6.400 21l1.400-7.100L3 9.600 9.300 9z",
  phone: "M5 4h4l2 5-2.500 1.500a11 11 0 0 0 5 5L15 13l5 2v4a2 2 0 0 1-2 2A16 16 0 0 1 3 6a2 2 0 0 1 2-2z",
  calendar: "M4 6h16v14H4z M4 10h16 M8 3v4 M16 3v4 M8 14h3",
  screen: "M3 5h18v11H3z M8 20h8 M12 16v4",
  heart: "M12 20C5 15 3 12 3 8.500A4.500 4.500 0 0 1 12 7a4.500 4.500 0 0 1 9 1.500C21 12 19 15 12 20z",
  house: "M3 11l9-7 9 7 M6 9v11h12V9 M10 20v-6h4v6",
  lock: "M6 11h12v9H6z M8.500 11V8a3.500 3.500 0 0 1 7 0v3",
};
const ALIASES = { mail: "envelope", home: "house", user: "person", users: "people", group: "people", warning: "bell" };
const NAMESPACE = "http://www.w3.org/2000/svg";

/** The names of the icons that have a drawing. */
export const ICON_NAMES = Object.keys(PATHS);

/** The drawing of an icon; null if its name has none.
 * @param {string} name @returns {SVGElement|null} */
export function drawing(name) {
  const known = Object.hasOwn(ALIASES, name) ? /** @type {any} */ (ALIASES)[name] : name;
  if (!Object.hasOwn(PATHS, known))
    return null;
  const svg = document.createElementNS(NAMESPACE, "svg");
  svg.setAttribute("viewBox", "0 0 24 24");
  svg.setAttribute("aria-hidden", "true");
  const path = document.createElementNS(NAMESPACE, "path");
  path.setAttribute("d", /** @type {any} */ (PATHS)[known]);
  svg.append(path);
  return svg;
}
