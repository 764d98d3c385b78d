// Moving keys by dragging: with a mouse or a pen. A touch scrolls; it moves keys by the button "Move".

import { el, foreign, one } from "./dom.js";

const THRESHOLD = 6; // pixels

/** @param {Desk} desk @param {() => boolean} mayDrag @param {(key: Key, to: Place) => void} drop */
export function enableDragging(desk, mayDrag, drop) {
  /** @type {{from: Place, x: number, y: number, ghost?: any}|null} the place as it was when the drag began */
  let drag = null;
  const placeUnder = (/** @type {PointerEvent} */ event) =>
    /** @type {any} */ (document.elementFromPoint(event.clientX, event.clientY)?.closest(".place"));
  const aim = (/** @type {any} */ target) => {
    one(".target", desk.element)?.classList.remove("target");
    target?.classList.add("target");
  };
  const end = () => {
    drag?.ghost?.remove();
    desk.element.classList.remove("dragging");
    aim(null);
    drag = null;
  };

  desk.element.addEventListener("pointerdown", (/** @type {PointerEvent} */ event) => {
    const from = placeUnder(event)?.item;
    if (event.button === 0 && event.pointerType !== "touch" && from?.key && mayDrag())
      drag = { from, x: event.clientX, y: event.clientY };
  });
  window.addEventListener("pointermove", (event) => {
    if (!drag || (!drag.ghost && Math.hypot(event.clientX - drag.x, event.clientY - drag.y) < THRESHOLD))
      return;
    if (!drag.ghost) {
      drag.ghost = el("div", { className: "ghost" }, foreign(drag.from.shown));
      document.body.append(drag.ghost);
      desk.element.classList.add("dragging");
    }
    drag.ghost.style.translate = `${event.clientX + 12}px ${event.clientY + 8}px`;
    aim(placeUnder(event));
  });
  window.addEventListener("pointerup", (event) => {
    const dropped = drag?.ghost && drag.from.key;
    const target = placeUnder(event);
    end();
    if (!dropped)
      return;
    // The click that follows is not one on a key.
    const stop = (/** @type {Event} */ click) => click.stopPropagation();
    window.addEventListener("click", stop, { capture: true });
    setTimeout(() => window.removeEventListener("click", stop, { capture: true }));
    if (desk.element.contains(target))
      drop(dropped, target.item);
  });
  window.addEventListener("pointercancel", end);
  window.addEventListener("keydown", (event) => event.key === "Escape" && end());
}
