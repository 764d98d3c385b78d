// Small helpers for the elements of the page. Texts always become text nodes or attributes.

/** An element with properties (`onclick`, `className`), attributes (`data-...`, `aria-...`) and children.
 * @param {string} tag @param {Record<string, any>} [properties] @param {...(Node|string|null|false|undefined)} children
 * @returns {any} */
export function el(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name.includes("-") || name === "role" || name === "for" || name === "list")
      value === null || element.setAttribute(name, value);
    else
      /** @type {any} */ (element)[name] = value;
  }
  element.append(...children.filter((child) => child || child === "").map((child) => /** @type {Node|string} */ (child)));
  return element;
}

/** A text from the bus: its direction does not affect its surroundings.
 * @param {string} text @param {string} [className] */
export const foreign = (text, className = "") => el("bdi", { textContent: text, className, dir: "auto" });

/** A button. Those that write are disabled while the user cannot write.
 * @param {string} label @param {() => void} onclick @param {{writes?: boolean, className?: string}} [options] */
export function button(label, onclick, options) {
  const { writes = false, className = "" } = options ?? {};
  return el("button", { type: "button", className, onclick, ...(writes ? { "data-writes": "" } : {}) }, label);
}

/** Makes these the children of an element, and moves only those that are not yet at their place.
 * @param {Element} host @param {Element[]} children */
export function arrange(host, children) {
  children.forEach((child, index) => {
    if (host.children[index] !== child)
      host.insertBefore(child, host.children[index] ?? null);
  });
  while (host.children.length > children.length)
    host.lastElementChild?.remove();
}

/** Calls a function that draws only when what it draws has changed.
 * @param {(value: any) => void} draw @returns {(value: any) => void} */
export function whenChanged(draw) {
  let last = "";
  return (value) => {
    const now = JSON.stringify(value);
    if (now !== last)
      draw(value);
    last = now;
  };
}

/** Shows a question or a form above the page.
 * @param {string} title @param {Element} content @returns {any} the dialog */
export function openDialog(title, content) {
  const heading = el("h2", { id: "dialog-title" }, title);
  const dialog = el("dialog", { "aria-labelledby": "dialog-title" }, heading, content);
  dialog.addEventListener("close", () => dialog.remove());
  document.body.append(dialog);
  dialog.showModal();
  return dialog;
}

/** Asks before something is deleted.
 * @param {string} title @param {(Node|string)[]} content @param {string} yes @returns {Promise<boolean>} */
export function confirmed(title, content, yes) {
  return new Promise((resolve) => {
    const dialog = openDialog(title, el("div", {}, ...content, el("div", { className: "buttons" },
      button(yes, () => dialog.close("yes"), { className: "danger" }), button("Cancel", () => dialog.close("")))));
    dialog.addEventListener("close", () => resolve(dialog.returnValue === "yes"));
  });
}
