// Moving keys by dragging: with a mouse or a pen. A touch scrolls; it moves keys by the button "Move".

const THRESHOLD = 6; // pixels

/** @param {import("./desk.js").Desk} desk @param {(place: import("./state.js").Place) => boolean} mayDrag
 * @param {(from: import("./state.js").Place, to: import("./state.js").Place) => void} drop */
export function enableDragging(desk, mayDrag, drop) {
  /** @type {{source: any, place: import("./state.js").Place, x: number, y: number, ghost: any}|null} */
  let drag = null;
  const placeUnder = (/** @type {PointerEvent} */ event) =>
    /** @type {any} */ (document.elementFromPoint(event.clientX, event.clientY))?.closest("[data-place]");
  const end = () => {
    drag?.ghost?.remove();
    desk.element.classList.remove("dragging");
    desk.element.querySelector(".target")?.classList.remove("target");
    drag = null;
  };

  desk.element.addEventListener("pointerdown", (/** @type {PointerEvent} */ event) => {
    const source = /** @type {any} */ (event.target).closest("[data-place]");
    const place = source && desk.placeOf.get(source);
    if (event.button === 0 && event.pointerType !== "touch" && place?.key && mayDrag(place))
      drag = { source, place, x: event.clientX, y: event.clientY, ghost: null };
  });
  window.addEventListener("pointermove", (event) => {
    if (!drag)
      return;
    if (!drag.ghost && Math.hypot(event.clientX - drag.x, event.clientY - drag.y) < THRESHOLD)
      return;
    if (!drag.ghost) {
      drag.ghost = drag.source.querySelector(".text").cloneNode(true);
      drag.ghost.classList.add("ghost");
      document.body.append(drag.ghost);
      desk.element.classList.add("dragging");
    }
    drag.ghost.style.translate = `${event.clientX + 12}px ${event.clientY + 8}px`;
    desk.element.querySelector(".target")?.classList.remove("target");
    placeUnder(event)?.classList.add("target");
  });
  window.addEventListener("pointerup", (event) => {
    const wasDragged = drag?.ghost;
    const from = drag?.place; // as it was when the drag began: another key may be there now
    const to = desk.placeOf.get(placeUnder(event) ?? document.body);
    end();
    if (!wasDragged)
      return;
    // The click that follows is not one on a key.
    const stop = (/** @type {Event} */ click) => click.stopPropagation();
    window.addEventListener("click", stop, { capture: true });
    setTimeout(() => window.removeEventListener("click", stop, { capture: true }));
    if (from && to)
      drop(from, to);
  });
  window.addEventListener("pointercancel", end);
  window.addEventListener("keydown", (event) => event.key === "Escape" && end());
}
