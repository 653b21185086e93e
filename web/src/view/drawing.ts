/** How regions come into being, point by point: the same for the pointer and for the keys. */

import type { Head } from "../head";
import { clamp, POINTS, type Point, type RegionKind } from "../regions";
import type { Store } from "../state";

const NAMES: Readonly<Record<RegionKind, string>> = {
  spot: "Spot",
  line: "Line",
  rectangle: "Rectangle",
  circle: "Circle",
  polygon: "Polygon",
};

export class Drawing {
  private lastId = 0;

  constructor(
    private readonly head: Head,
    private readonly store: Store,
  ) {
    this.lastId = Math.max(-1, ...store.state.regions.map((region) => region.id));
  }

  get isOn(): boolean {
    return this.store.state.tool !== "look" && this.store.state.draft.length > 0;
  }

  inFrame({ x, y }: Point): Point {
    return { x: clamp(x, 0, this.head.width - 1), y: clamp(y, 0, this.head.height - 1) };
  }

  /** The first point, with a second one that `moveTo` moves. */
  begin(at: Point): void {
    const { tool } = this.store.state;
    if (tool === "look") return;
    const point = this.inFrame(at);
    if (POINTS[tool] === 1) this.finish([point]);
    else this.store.set({ draft: [point, point], selected: null });
  }

  /** Moves the point that is not yet set. */
  moveTo(at: Point): void {
    if (this.isOn) this.store.set({ draft: [...this.store.state.draft.slice(0, -1), this.inFrame(at)] });
  }

  /** Sets that point; the last one ends the region. A polygon ends where a point is set twice. */
  set(at: Point): void {
    const { tool, draft } = this.store.state;
    if (tool === "look" || draft.length === 0) return;
    const point = this.inFrame(at);
    const points = [...draft.slice(0, -1), point];
    const before = draft[draft.length - 2];
    const twice = before.x === point.x && before.y === point.y;
    if (tool === "polygon" && twice) this.close();
    else if (tool === "polygon") this.store.set({ draft: [...points, point] });
    else if (!twice) this.finish(points);
  }

  /** Ends a polygon; one of fewer than three corners is given up. */
  close(): void {
    const points = this.store.state.draft.slice(0, -1);
    if (this.store.state.tool === "polygon" && points.length >= 3) this.finish(points);
    else this.giveUp();
  }

  giveUp(): void {
    this.store.set({ draft: [] });
  }

  private finish(points: Point[]): void {
    const { tool, regions } = this.store.state;
    if (tool === "look") return;
    const id = ++this.lastId;
    const name = `${NAMES[tool]} ${id + 1}`;
    this.store.set({ regions: [...regions, { id, name, kind: tool, points }], selected: id, draft: [], tool: "look" });
  }
}
