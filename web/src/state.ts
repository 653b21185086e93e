/** What the page shows at a moment, and who wants to know when it changes. */

import type { Frame } from "./packing";
import type { Point, Region, RegionKind } from "./regions";
import type { Scale } from "./units";

export type Tool = "look" | RegionKind;

export interface State {
  index: number;
  /** The unpacked frame of `index`, or the one before while it is unpacked. */
  frame: Frame;
  playing: boolean;
  palette: string;
  scale: Scale | null;
  /** Ends of the colour bar, in the packed unit. */
  low: number;
  high: number;
  /** Percent left out at each end by the automatic range. */
  leaveOut: number;
  /** The range is found anew for every frame. */
  follow: boolean;
  markBeyond: boolean;
  /** Figures are of pixels without any flag alone, not of all that the tool counts. */
  goodOnly: boolean;
  tool: Tool;
  regions: Region[];
  /** Of a region; null for none. */
  selected: number | null;
  /** Points of the region that is being drawn. */
  draft: Point[];
  /** The pixel that is read; null when the pointer is elsewhere. */
  cursor: Point | null;
  /** The pixel in the middle of the view, and screen pixels for one pixel relative to the frame that just fits. */
  centre: Point;
  zoom: number;
}

export class Store {
  private readonly listeners: { keys: ReadonlySet<keyof State>; listener: () => void }[] = [];
  private changed = new Set<keyof State>();

  constructor(private current: State) {}

  get state(): Readonly<State> {
    return this.current;
  }

  set(patch: Partial<State>): void {
    const keys = (Object.keys(patch) as (keyof State)[]).filter((key) => patch[key] !== this.current[key]);
    if (keys.length === 0) return;
    this.current = { ...this.current, ...patch };
    if (this.changed.size === 0) queueMicrotask(() => this.tell());
    keys.forEach((key) => this.changed.add(key));
  }

  /** Calls the listener once now, and once after each turn that changed one of the keys. */
  on(keys: readonly (keyof State)[], listener: () => void): void {
    this.listeners.push({ keys: new Set(keys), listener });
    listener();
  }

  selectedRegion(): Region | null {
    return this.current.regions.find((region) => region.id === this.current.selected) ?? null;
  }

  replaceRegion(region: Region): void {
    this.set({ regions: this.current.regions.map((old) => (old.id === region.id ? region : old)) });
  }

  removeRegion(id: number): void {
    this.set({
      regions: this.current.regions.filter((region) => region.id !== id),
      selected: this.current.selected === id ? null : this.current.selected,
    });
  }

  private tell(): void {
    const changed = this.changed;
    this.changed = new Set();
    for (const { keys, listener } of this.listeners) {
      if ([...changed].some((key) => keys.has(key))) listener();
    }
  }
}
