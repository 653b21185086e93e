/** The frame on its canvas: colours, zoom, regions, the pixel that is read. */

import type { Head } from "../head";
import { paint, paletteOf, type Kind } from "../palette";
import { boundsOf, clamp, type Point, type Region } from "../regions";
import type { Store } from "../state";
import { byId, fitCanvas } from "./dom";

export const REGION_COLOURS = ["#38bdf8", "#f472b6", "#a3e635", "#fb923c", "#c084fc", "#facc15", "#2dd4bf", "#f87171"];
export const MOST_ZOOM = 64;

export function regionColour(id: number): string {
  return REGION_COLOURS[id % REGION_COLOURS.length];
}

/** From pixels of the frame to CSS pixels of the canvas and back. */
export class Mapping {
  readonly scale: number;
  private readonly left: number;
  private readonly top: number;

  constructor(head: Head, size: { width: number; height: number }, zoom: number, centre: Point) {
    this.scale = Math.min(size.width / head.width, size.height / head.height) * zoom;
    const start = (middle: number, whole: number, screen: number) => {
      const wide = whole * this.scale;
      return wide <= screen ? (screen - wide) / 2 : clamp(screen / 2 - (middle + 0.5) * this.scale, screen - wide, 0);
    };
    this.left = start(centre.x, head.width, size.width);
    this.top = start(centre.y, head.height, size.height);
  }

  /** Of the upper left corner of a pixel. */
  toScreen({ x, y }: Point): Point {
    return { x: this.left + x * this.scale, y: this.top + y * this.scale };
  }
  toFrame({ x, y }: Point): Point {
    return { x: Math.floor((x - this.left) / this.scale), y: Math.floor((y - this.top) / this.scale) };
  }
}

export class Picture {
  readonly canvas = byId<HTMLCanvasElement>("picture");
  /** Of the frame that is drawn. */
  counts: Readonly<Record<Kind, number>> = { shown: 0, uncalibrated: 0, below: 0, above: 0, under: 0, over: 0, noData: 0 };
  private readonly pixels = document.createElement("canvas");
  private size = { width: 1, height: 1 };

  constructor(
    private readonly head: Head,
    private readonly store: Store,
  ) {
    [this.pixels.width, this.pixels.height] = [head.width, head.height];
    this.canvas.style.aspectRatio = `${head.width} / ${head.height}`;
    new ResizeObserver(() => this.resize()).observe(this.canvas);
    this.resize();
    store.on(["frame", "palette", "low", "high", "markBeyond"], () => this.colour());
    store.on(["regions", "selected", "draft", "cursor", "centre", "zoom", "tool"], () => this.draw());
  }

  get mapping(): Mapping {
    const { zoom, centre } = this.store.state;
    return new Mapping(this.head, this.size, zoom, centre);
  }

  /** The pixels of the frame that can be seen. */
  visible(): { x: number; y: number; width: number; height: number } {
    const { width, height } = this.head;
    const from = this.mapping.toFrame({ x: 0, y: 0 });
    const to = this.mapping.toFrame({ x: this.size.width - 1, y: this.size.height - 1 });
    const [x, y] = [clamp(from.x, 0, width - 1), clamp(from.y, 0, height - 1)];
    return { x, y, width: clamp(to.x, x, width - 1) - x + 1, height: clamp(to.y, y, height - 1) - y + 1 };
  }

  private resize(): void {
    const { clientWidth: width, clientHeight: height } = this.canvas;
    if (width === 0) return;
    this.size = { width, height };
    this.draw();
  }

  private colour(): void {
    const { frame, palette, low, high, markBeyond } = this.store.state;
    const context = this.pixels.getContext("2d") as CanvasRenderingContext2D;
    const image = context.createImageData(this.head.width, this.head.height);
    const colours = this.head.palettes.find(({ name }) => name === palette) ?? this.head.palettes[0];
    const painting = { palette: paletteOf(colours.colours), low, high, markBeyond };
    this.counts = paint(new Uint32Array(image.data.buffer), frame, this.head, painting);
    context.putImageData(image, 0, 0);
    this.draw();
  }

  private draw(): void {
    const context = fitCanvas(this.canvas, this.size.width, this.size.height);
    this.drawOn(context, this.size);
    this.drawCursor(context);
  }

  /** The frame and its regions as they are seen, without what belongs to the pointer. */
  drawOn(context: CanvasRenderingContext2D, size: { width: number; height: number }): void {
    const { regions, selected, draft, tool, zoom, centre } = this.store.state;
    const mapping = new Mapping(this.head, size, zoom, centre);
    context.clearRect(0, 0, size.width, size.height);
    context.imageSmoothingEnabled = false;
    const { x, y } = mapping.toScreen({ x: 0, y: 0 });
    context.drawImage(this.pixels, x, y, this.head.width * mapping.scale, this.head.height * mapping.scale);
    for (const region of regions) drawRegion(context, mapping, region, region.id === selected);
    if (draft.length > 0 && tool !== "look") {
      drawRegion(context, mapping, { id: -1, name: "", kind: tool, points: draft }, true);
    }
  }

  private drawCursor(context: CanvasRenderingContext2D): void {
    const { cursor } = this.store.state;
    if (!cursor) return;
    const { scale } = this.mapping;
    const { x, y } = this.mapping.toScreen(cursor);
    const side = Math.max(scale, 7);
    const [left, top] = [x + scale / 2 - side / 2, y + scale / 2 - side / 2];
    stroke(context, "#ffffff", 1, () => context.rect(left, top, side, side));
  }
}

/** A line that stands out from every palette: a dark one below a bright one. */
function stroke(context: CanvasRenderingContext2D, colour: string, width: number, path: () => void): void {
  for (const [style, wide] of [["#000000b0", width + 2.5], [colour, width]] as const) {
    context.beginPath();
    path();
    context.strokeStyle = style;
    context.lineWidth = wide;
    context.stroke();
  }
}

function drawRegion(context: CanvasRenderingContext2D, mapping: Mapping, region: Region, selected: boolean): void {
  const colour = region.id < 0 ? "#ffffff" : regionColour(region.id);
  const half = mapping.scale / 2;
  const middles = region.points.map((point) => {
    const { x, y } = mapping.toScreen(point);
    return { x: x + half, y: y + half };
  });
  stroke(context, colour, selected ? 2.5 : 1.5, () => trace(context, mapping, region, middles));
  if (selected) {
    for (const { x, y } of middles) {
      context.fillStyle = colour;
      context.fillRect(x - 3.5, y - 3.5, 7, 7);
      context.strokeStyle = "#000000";
      context.lineWidth = 1;
      context.strokeRect(x - 3.5, y - 3.5, 7, 7);
    }
  }
  if (region.name) drawName(context, mapping, region, colour);
}

function trace(context: CanvasRenderingContext2D, mapping: Mapping, region: Region, middles: readonly Point[]): void {
  const [a, b] = middles;
  switch (region.kind) {
    case "spot":
      context.moveTo(a.x - 8, a.y);
      context.lineTo(a.x + 8, a.y);
      context.moveTo(a.x, a.y - 8);
      context.lineTo(a.x, a.y + 8);
      return;
    case "rectangle": {
      const { x, y, width, height } = boundsOf(region);
      const corner = mapping.toScreen({ x, y });
      context.rect(corner.x, corner.y, width * mapping.scale, height * mapping.scale);
      return;
    }
    case "circle":
      context.arc(a.x, a.y, b ? Math.hypot(b.x - a.x, b.y - a.y) : 0, 0, 2 * Math.PI);
      return;
    default:
      context.moveTo(a.x, a.y);
      for (const { x, y } of middles.slice(1)) context.lineTo(x, y);
      if (region.kind === "polygon" && region.id >= 0) context.closePath();
  }
}

function drawName(context: CanvasRenderingContext2D, mapping: Mapping, region: Region, colour: string): void {
  const bounds = boundsOf(region);
  const { x, y } = mapping.toScreen(bounds);
  context.font = '600 12px system-ui, "DejaVu Sans", sans-serif';
  const width = context.canvas.width / context.getTransform().a;
  const rightmost = width - context.measureText(region.name).width - 2;
  const at = { x: Math.max(2, Math.min(x, rightmost)), y: y - 5 < 12 ? y + bounds.height * mapping.scale + 14 : y - 5 };
  context.lineWidth = 3;
  context.lineJoin = "round";
  context.strokeStyle = "#000000c0";
  context.strokeText(region.name, at.x, at.y);
  context.fillStyle = colour;
  context.fillText(region.name, at.x, at.y);
}
