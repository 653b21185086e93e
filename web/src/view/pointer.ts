/** Mouse, pen and finger on the picture: read, draw, move, pan, zoom. */

import type { Head } from "../head";
import { clamp, isNear, movedBy, withPoint, type Point, type Region } from "../regions";
import type { Store } from "../state";
import type { Drawing } from "./drawing";
import { MOST_ZOOM, type Picture } from "./picture";

/** What a pressed button does until it is let go. */
type Drag =
  | { kind: "draw"; from: Point }
  | { kind: "region"; region: Region; from: Point }
  | { kind: "point"; region: Region; index: number }
  | { kind: "pan"; from: Point; centre: Point };

/** In CSS pixels. */
const REACH = 8;

export class PointerControl {
  private drag: Drag | null = null;

  constructor(
    private readonly head: Head,
    private readonly store: Store,
    private readonly picture: Picture,
    private readonly drawing: Drawing,
  ) {
    const { canvas } = picture;
    canvas.addEventListener("pointerdown", (event) => this.down(event));
    canvas.addEventListener("pointermove", (event) => this.move(event));
    canvas.addEventListener("pointerup", (event) => this.up(event));
    canvas.addEventListener("pointercancel", () => (this.drag = null));
    canvas.addEventListener("pointerleave", () => !this.drag && store.set({ cursor: null }));
    canvas.addEventListener("dblclick", () => drawing.isOn && drawing.close());
    canvas.addEventListener("wheel", (event) => this.wheel(event), { passive: false });
  }

  zoomBy(factor: number, around?: Point): void {
    const { zoom, centre } = this.store.state;
    const next = clamp(zoom * factor, 1, MOST_ZOOM);
    const fixed = around ?? centre;
    const share = zoom / next;
    const middle = { x: fixed.x + (centre.x - fixed.x) * share, y: fixed.y + (centre.y - fixed.y) * share };
    this.store.set({ zoom: next, centre: next === 1 ? this.middle() : this.drawing.inFrame(middle) });
  }

  fit(): void {
    this.store.set({ zoom: 1, centre: this.middle() });
  }

  private middle(): Point {
    return { x: (this.head.width - 1) / 2, y: (this.head.height - 1) / 2 };
  }

  private screenOf(event: MouseEvent): Point {
    const { left, top } = this.picture.canvas.getBoundingClientRect();
    return { x: event.clientX - left, y: event.clientY - top };
  }

  private down(event: PointerEvent): void {
    if (event.button !== 0 && event.button !== 1) return;
    this.picture.canvas.setPointerCapture(event.pointerId);
    const at = this.picture.mapping.toFrame(this.screenOf(event));
    if (this.store.state.tool !== "look" && event.button === 0) {
      if (this.drawing.isOn) this.drawing.moveTo(at);
      else this.drawing.begin(at);
      this.drag = { kind: "draw", from: at };
    } else {
      this.drag = this.grip(event, at);
    }
  }

  /** A point of the selected region, a region, or the frame itself. */
  private grip(event: PointerEvent, at: Point): Drag {
    const { regions, centre } = this.store.state;
    const selected = this.store.selectedRegion();
    const index = selected ? this.pointNear(selected, this.screenOf(event)) : -1;
    if (selected && selected.points.length > 1 && index >= 0) return { kind: "point", region: selected, index };
    const reach = Math.max(0, REACH / this.picture.mapping.scale);
    const region = [...regions].reverse().find((one) => isNear(one, at, one.points.length > 2 ? 0 : Math.min(reach, 4)));
    this.store.set({ selected: region?.id ?? null });
    return region ? { kind: "region", region, from: at } : { kind: "pan", from: this.screenOf(event), centre };
  }

  private pointNear(region: Region, at: Point): number {
    const { mapping } = this.picture;
    return region.points.findIndex((point) => {
      const { x, y } = mapping.toScreen(point);
      return Math.hypot(x + mapping.scale / 2 - at.x, y + mapping.scale / 2 - at.y) <= REACH;
    });
  }

  private move(event: PointerEvent): void {
    const { mapping } = this.picture;
    const screen = this.screenOf(event);
    const at = mapping.toFrame(screen);
    const { width, height } = this.head;
    const inside = at.x >= 0 && at.y >= 0 && at.x < width && at.y < height;
    this.store.set({ cursor: inside ? at : null });
    if (this.drawing.isOn) this.drawing.moveTo(at);
    const { drag } = this;
    if (drag?.kind === "region") {
      this.store.replaceRegion(movedBy(drag.region, at.x - drag.from.x, at.y - drag.from.y, width, height));
    } else if (drag?.kind === "point") {
      this.store.replaceRegion(withPoint(drag.region, drag.index, at, width, height));
    } else if (drag?.kind === "pan") {
      const [dx, dy] = [(screen.x - drag.from.x) / mapping.scale, (screen.y - drag.from.y) / mapping.scale];
      this.store.set({ centre: this.drawing.inFrame({ x: drag.centre.x - dx, y: drag.centre.y - dy }) });
    }
  }

  private up(event: PointerEvent): void {
    const { drag } = this;
    this.drag = null;
    if (drag?.kind !== "draw" || !this.drawing.isOn) return;
    const at = this.picture.mapping.toFrame(this.screenOf(event));
    const moved = at.x !== drag.from.x || at.y !== drag.from.y;
    const first = this.store.state.draft.length === 2;
    // A first press that did not move begins a region whose next point comes with the next press.
    if (moved || !first || !this.isBeginning(at)) this.drawing.set(at);
  }

  private isBeginning(at: Point): boolean {
    const [begin] = this.store.state.draft;
    return begin.x === at.x && begin.y === at.y;
  }

  private wheel(event: WheelEvent): void {
    event.preventDefault();
    const at = this.picture.mapping.toFrame(this.screenOf(event));
    this.zoomBy(1.0015 ** -event.deltaY, this.drawing.inFrame(at));
  }
}
