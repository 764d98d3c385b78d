// The events of the phone, decoded and written as "progkeysctl monitor" writes them.

import { clip, fromWire } from "./records.js";

const LONGEST_LOGGED = 4096;

/** The event of a signal with the body `sa(svb)`; null for any other body.
 * @param {string} path @param {any[]} body @returns {PhoneEvent|null} */
export function eventFrom(path, [event, list]) {
  if (typeof event !== "string" || !Array.isArray(list) || !list.every((item) => Array.isArray(item) && item.length === 3))
    return null;
  const values = list.map(([name, variant]) => ({ name, value: fromWire(variant.t, variant.v) }));
  return { event, module: path.slice(path.lastIndexOf("/") + 1), arguments: values };
}

/** An event as the log keeps it: with shortened texts, because the log keeps many.
 * @param {PhoneEvent} event @returns {PhoneEvent} */
export const shortened = (event) =>
  JSON.parse(JSON.stringify(event, (_, value) => typeof value === "string" ? clip(value, LONGEST_LOGGED) : value));

/** @param {string} text */
const printable = (text) => text.replace(/[\u0000-\u001f\u007f-\u009f]/g, (found) => JSON.stringify(found).slice(1, -1));

/** @param {any} value @returns {string} */
function valueText(value) {
  if (typeof value === "string")
    return `"${printable(value)}"`;
  if (typeof value === "boolean")
    return value ? "yes" : "no";
  if (value === null || typeof value !== "object" || Array.isArray(value))
    return JSON.stringify(value);
  const fields = Object.entries(value).filter(([, field]) => field !== "");
  return `{${fields.map(([name, field]) => `${name}=${valueText(field)}`).join(" ")}}`;
}

/** The arguments of an event in one line.
 * @param {PhoneEvent} event */
export const argumentsText = (event) =>
  event.arguments.map(({ name, value }) => `${printable(name)}=${valueText(value)}`).join(" ");

/** The entries of a log that contain a text.
 * @param {LogEntry[]} log @param {string} filter */
export function matching(log, filter) {
  const wanted = filter.trim().toLowerCase();
  return wanted ? log.filter((entry) => `${entry.event} ${entry.text}`.toLowerCase().includes(wanted)) : log;
}
