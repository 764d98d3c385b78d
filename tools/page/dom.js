// Small helpers for the elements of the page. Texts always become text nodes or attributes.

/** The first element that matches.
 * @param {string} css @param {ParentNode} [host] @returns {any} */
export const one = (css, host = document) => host.querySelector(css);

/** A copy of what a template of the page holds.
 * @param {string} id @returns {any} */
export const copyOf = (id) => one(`template#${id}`).content.cloneNode(true);

/** A copy of a template that holds one element.
 * @param {string} id @returns {any} */
export const template = (id) => copyOf(id).firstElementChild;

/** An element with properties (`onclick`, `className`), attributes (`data-...`, `aria-...`) and children.
 * @param {string} tag @param {Record<string, any>} [properties] @param {...(Node|string)} children @returns {any} */
export function el(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties))
    name.includes("-") || name === "role" ? element.setAttribute(name, value) : (/** @type {any} */ (element)[name] = value);
  element.append(...children);
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

/** Makes the children of an element show a list. Each has its item as a property. A child whose item stays is
 * kept, and drawn again only if the item has changed: the focus stays, and long lists are drawn quickly.
 * @template T @param {Element} host @param {T[]} items @param {(item: T) => any} nameOf
 * @param {() => any} create @param {(child: any, item: T) => void} draw */
export function drawList(host, items, nameOf, create, draw) {
  const before = new Map([...host.children].map((/** @type {any} */ child) => [nameOf(child.item), child]));
  const children = items.map((item) => {
    const child = before.get(nameOf(item)) ?? create();
    before.delete(nameOf(item));
    const content = child.item === item ? child.content : JSON.stringify(item);
    if (content !== child.content)
      draw(child, item);
    return Object.assign(child, { item, content });
  });
  for (const child of before.values())
    child.remove();
  let next = host.firstElementChild;
  for (const child of children) {
    if (child !== next)
      host.insertBefore(child, next);
    next = child.nextElementSibling;
  }
}

/** Makes a function that draws only when what it draws has changed.
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
  const dialog = el("dialog", { "aria-labelledby": "dialog-title", onclose: () => dialog.remove() },
    el("h2", { id: "dialog-title" }, foreign(title)), content);
  document.body.append(dialog);
  dialog.showModal();
  return dialog;
}

/** Asks before something is deleted.
 * @param {string} title @param {string} question @param {string} yes @returns {Promise<boolean>} */
export function confirmed(title, question, yes) {
  const dialog = openDialog(title, el("form", { method: "dialog" },
    el("p", { className: "question", id: "dialog-question" }, foreign(question)),
    el("div", { className: "buttons" }, el("button", { value: "yes", className: "danger" }, yes), el("button", { autofocus: true }, "Cancel"))));
  dialog.setAttribute("aria-describedby", "dialog-question");
  return new Promise((resolve) => dialog.addEventListener("close", () => resolve(dialog.returnValue === "yes")));
}
