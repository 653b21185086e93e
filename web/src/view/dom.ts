/** Elements of the page. All texts go in as texts. */

export function byId<T extends HTMLElement>(id: string): T {
  const element = document.getElementById(id);
  if (!element) throw new Error(`the page has no element ${id}`);
  return element as T;
}

type Child = Node | string;

export function make<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Record<string, string> = {},
  ...children: Child[]
): HTMLElementTagNameMap[K] {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  element.append(...children);
  return element;
}

export function makeButton(text: string, attributes: Record<string, string>, onClick: () => void): HTMLButtonElement {
  const button = make("button", { type: "button", ...attributes }, text);
  button.addEventListener("click", onClick);
  return button;
}

export function swatch(colour: string): HTMLElement {
  const element = make("span", { class: "swatch", "aria-hidden": "true" });
  element.style.background = colour;
  return element;
}

export function fillSelect(select: HTMLSelectElement, options: readonly (readonly [value: string, text: string])[]): void {
  select.replaceChildren(...options.map(([value, text]) => make("option", { value }, text)));
}

/** A colour of the theme that is on. */
export function themeColour(name: string): string {
  return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

export function onThemeChange(listener: () => void): void {
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", listener);
}

/** Makes a canvas as many device pixels large as it takes on the screen, and its context count in CSS pixels. */
export function fitCanvas(canvas: HTMLCanvasElement, width: number, height: number): CanvasRenderingContext2D {
  const ratio = window.devicePixelRatio || 1;
  const [w, h] = [Math.max(1, Math.round(width * ratio)), Math.max(1, Math.round(height * ratio))];
  if (canvas.width !== w || canvas.height !== h) [canvas.width, canvas.height] = [w, h];
  const context = canvas.getContext("2d", { willReadFrequently: true });
  if (!context) throw new Error("this browser draws no canvas");
  context.setTransform(ratio, 0, 0, ratio, 0, 0);
  return context;
}

/** Offers bytes as a file of that name. */
export function save(name: string, content: Blob): void {
  const link = make("a", { download: name, href: URL.createObjectURL(content) });
  document.body.append(link);
  link.click();
  link.remove();
  setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
}
