/** All that the pointer does, by keys. */

import type { Head } from "../head";
import { movedBy, withPoint, type Point } from "../regions";
import type { Store, Tool } from "../state";
import type { Drawing } from "./drawing";
import { byId, make } from "./dom";
import type { Player } from "./player";
import type { PointerControl } from "./pointer";

const HELP: readonly (readonly [keys: string, does: string])[] = [
  ["Space", "play or pause"],
  [", .", "previous, next frame"],
  ["Home End", "first, last frame"],
  ["+ − 0", "zoom in, out, whole frame"],
  ["a", "automatic range of this frame"],
  ["s l r c p", "draw a spot, line, rectangle, circle, polygon"],
  ["Arrows", "on the picture: move the reading point, or the selected region; ten pixels with Shift"],
  ["Ctrl Arrows", "move the last point of the selected region"],
  ["Enter", "set a point of the region that is drawn; on the same place twice ends a polygon"],
  ["n", "select the next region"],
  ["Delete", "delete the selected region"],
  ["Escape", "give up drawing, or select nothing"],
];

const TOOLS: Readonly<Record<string, Tool>> = { s: "spot", l: "line", r: "rectangle", c: "circle", p: "polygon" };
const ARROWS: Readonly<Record<string, Point>> = {
  ArrowLeft: { x: -1, y: 0 },
  ArrowRight: { x: 1, y: 0 },
  ArrowUp: { x: 0, y: -1 },
  ArrowDown: { x: 0, y: 1 },
};

export class KeyControl {
  private readonly actions: Readonly<Record<string, () => void>>;

  constructor(
    private readonly head: Head,
    private readonly store: Store,
    private readonly drawing: Drawing,
    private readonly canvas: HTMLCanvasElement,
    pointer: PointerControl,
    player: Player,
  ) {
    byId("keys").replaceChildren(...HELP.map(([keys, does]) => make("li", {}, make("kbd", {}, keys), ` ${does}`)));
    this.actions = {
      " ": () => player.toggle(),
      ",": () => player.step(-1),
      ".": () => player.step(1),
      Home: () => player.goTo(0),
      End: () => player.goTo(head.frames.length - 1),
      "+": () => pointer.zoomBy(1.5, store.state.cursor ?? undefined),
      "-": () => pointer.zoomBy(1 / 1.5, store.state.cursor ?? undefined),
      "0": () => pointer.fit(),
      a: () => byId("automatic").click(),
      n: () => this.selectNext(),
      Escape: () => (drawing.isOn ? drawing.giveUp() : store.set({ selected: null, tool: "look" })),
      Delete: () => store.state.selected !== null && store.removeRegion(store.state.selected),
    };
    document.addEventListener("keydown", (event) => this.press(event));
    canvas.addEventListener("blur", () => store.set({ cursor: null }));
  }

  private press(event: KeyboardEvent): void {
    if (event.altKey || event.metaKey || event.defaultPrevented || !this.mayTake(event)) return;
    const onPicture = event.target === this.canvas;
    if (onPicture && event.key in ARROWS) this.arrow(event);
    else if (event.ctrlKey) return;
    else if (onPicture && event.key === "Enter") this.enter();
    else if (event.key in TOOLS) this.begin(TOOLS[event.key]);
    else if (event.key in this.actions) this.actions[event.key]();
    else return;
    event.preventDefault();
  }

  /** Fields and buttons keep the keys that mean something to them. */
  private mayTake({ target, key }: KeyboardEvent): boolean {
    if (!(target instanceof HTMLElement)) return true;
    if (target instanceof HTMLInputElement && target.type === "range") return !["Home", "End"].includes(key);
    if (target.matches("input, select, textarea")) return key === "Escape";
    if (target.getAttribute("role") === "slider") return !["Home", "End"].includes(key);
    return !(target.matches("button, summary, a") && [" ", "Enter"].includes(key));
  }

  private begin(tool: Tool): void {
    this.drawing.giveUp();
    this.store.set({ tool, selected: null });
    this.canvas.focus();
  }

  private arrow({ key, shiftKey, ctrlKey }: KeyboardEvent): void {
    const step = shiftKey ? 10 : 1;
    const [dx, dy] = [ARROWS[key].x * step, ARROWS[key].y * step];
    const { width, height } = this.head;
    const region = this.store.selectedRegion();
    if (region && this.store.state.tool === "look") {
      const last = region.points.length - 1;
      const { x, y } = region.points[last];
      this.store.replaceRegion(
        ctrlKey
          ? withPoint(region, last, { x: x + dx, y: y + dy }, width, height)
          : movedBy(region, dx, dy, width, height),
      );
      return;
    }
    const { x, y } = this.cursor();
    const cursor = this.drawing.inFrame({ x: x + dx, y: y + dy });
    this.store.set({ cursor });
    this.drawing.moveTo(cursor);
  }

  private enter(): void {
    const cursor = this.cursor();
    this.store.set({ cursor });
    if (this.drawing.isOn) this.drawing.set(cursor);
    else this.drawing.begin(cursor);
  }

  private cursor(): Point {
    const { cursor, centre } = this.store.state;
    return cursor ?? { x: Math.round(centre.x), y: Math.round(centre.y) };
  }

  private selectNext(): void {
    const { regions, selected } = this.store.state;
    if (regions.length === 0) return;
    const next = regions[(regions.findIndex((region) => region.id === selected) + 1) % regions.length];
    this.store.set({ selected: next.id, tool: "look" });
    this.canvas.focus();
  }
}
