/** The colour bar: its ends dragged, typed, moved by keys or found by percentiles. */

import type { Head } from "../head";
import { paletteOf } from "../palette";
import { percentile, sortedValues } from "../statistics";
import type { Store } from "../state";
import { Shown, ticks } from "../units";
import { byId, fillSelect, fitCanvas, onThemeChange, themeColour } from "./dom";

type Grip = "low" | "high" | "level";

const LEAVE_OUT = [0, 0.1, 0.5, 1, 2, 5];
const BAR_WIDTH = 22;
/** Above the colours for half a line of text, below them for the unit. */
const ABOVE = 9;
const BELOW = 26;

/** New ends after the grip went up by a share of the bar's height; one end never passes the other. */
export function dragged(grip: Grip, low: number, high: number, share: number): { low: number; high: number } {
  const by = (high - low) * share;
  return {
    low: grip === "high" ? low : Math.min(low + by, grip === "low" ? high : Infinity),
    high: grip === "low" ? high : Math.max(high + by, grip === "high" ? low : -Infinity),
  };
}

export class ColourBar {
  private readonly canvas = byId<HTMLCanvasElement>("bar-picture");
  private readonly fields = { low: byId<HTMLInputElement>("low"), high: byId<HTMLInputElement>("high") };

  constructor(
    private readonly head: Head,
    private readonly store: Store,
  ) {
    for (const grip of ["low", "high", "level"] as const) this.addGrip(grip);
    for (const end of ["low", "high"] as const) {
      this.fields[end].addEventListener("change", () => this.typed(end));
    }
    this.addAutomatic();
    new ResizeObserver(() => this.draw()).observe(this.canvas);
    onThemeChange(() => this.draw());
    store.on(["low", "high", "scale", "palette"], () => this.show());
    store.on(["frame", "follow", "leaveOut"], () => store.state.follow && this.findRange());
  }

  get shown(): Shown {
    return new Shown(this.head, this.store.state.scale);
  }

  /** The range between two percentiles of the frame. */
  findRange(): void {
    const { frame, leaveOut } = this.store.state;
    const sorted = sortedValues(frame, null, { flags: this.head.flags, notCounted: 255 });
    this.setRange(percentile(sorted, leaveOut / 100), percentile(sorted, 1 - leaveOut / 100));
  }

  /** Never narrower than a step. */
  private setRange(low: number, high: number): void {
    if (!Number.isFinite(low) || !Number.isFinite(high)) return;
    const lack = Math.max(0, this.head.step - (high - low)) / 2;
    this.store.set({ low: low - lack, high: high + lack });
  }

  private addAutomatic(): void {
    const { store } = this;
    const leaveOut = byId<HTMLSelectElement>("leave-out");
    fillSelect(leaveOut, LEAVE_OUT.map((percent) => [String(percent), `${percent} %`]));
    leaveOut.value = String(store.state.leaveOut);
    leaveOut.addEventListener("change", () => {
      store.set({ leaveOut: Number(leaveOut.value) });
      this.findRange();
    });
    byId("automatic").addEventListener("click", () => this.findRange());
    const follow = byId<HTMLInputElement>("follow");
    follow.addEventListener("change", () => store.set({ follow: follow.checked }));
    store.on(["follow"], () => (follow.checked = store.state.follow));
    const mark = byId<HTMLInputElement>("mark-beyond");
    mark.addEventListener("change", () => store.set({ markBeyond: mark.checked }));
  }

  private addGrip(grip: Grip): void {
    const element = byId(`bar-${grip}`);
    let from: { y: number; low: number; high: number } | null = null;
    element.addEventListener("pointerdown", (event) => {
      element.setPointerCapture(event.pointerId);
      const { low, high } = this.store.state;
      from = { y: event.clientY, low, high };
    });
    element.addEventListener("pointermove", (event) => {
      if (from) this.move(grip, from.low, from.high, (from.y - event.clientY) / colourHeight(this.canvas.clientHeight));
    });
    element.addEventListener("lostpointercapture", () => (from = null));
    element.addEventListener("keydown", (event) => {
      const steps: Record<string, number> = { ArrowUp: 1, ArrowRight: 1, ArrowDown: -1, ArrowLeft: -1, PageUp: 10, PageDown: -10 };
      if (!(event.key in steps)) return;
      event.preventDefault();
      const { low, high } = this.store.state;
      this.move(grip, low, high, steps[event.key] / 100);
    });
  }

  private move(grip: Grip, low: number, high: number, share: number): void {
    const range = dragged(grip, low, high, share);
    this.ownRange(range.low, range.high);
  }

  private typed(end: "low" | "high"): void {
    const value = this.shown.packed(this.fields[end].valueAsNumber);
    const { low, high } = this.store.state;
    if (end === "low" && value < high) this.ownRange(value, high);
    else if (end === "high" && value > low) this.ownRange(low, value);
    else this.show();
  }

  /** A range that somebody chose is not found anew. */
  private ownRange(low: number, high: number): void {
    this.store.set({ follow: false });
    this.setRange(low, high);
  }

  private show(): void {
    const { low, high } = this.store.state;
    const { shown } = this;
    const describe = (grip: Grip, value: number) => {
      const element = byId(`bar-${grip}`);
      element.setAttribute("aria-valuenow", String(Number(shown.value(value).toPrecision(6))));
      element.setAttribute("aria-valuetext", shown.textWithUnit(value));
    };
    describe("low", low);
    describe("high", high);
    describe("level", (low + high) / 2);
    this.fields.low.value = shown.text(low);
    this.fields.high.value = shown.text(high);
    this.draw();
  }

  private draw(): void {
    const { clientWidth: width, clientHeight: height } = this.canvas;
    if (width > 0) this.drawOn(fitCanvas(this.canvas, width, height), { width, height }, themeColour("ink"));
  }

  /** The bar with its ticks and its unit, from the upper left corner on. */
  drawOn(context: CanvasRenderingContext2D, size: { width: number; height: number }, ink: string): void {
    const { low, high, palette } = this.store.state;
    const { shown } = this;
    const colours = paletteOf((this.head.palettes.find(({ name }) => name === palette) ?? this.head.palettes[0]).colours);
    const bar = { top: ABOVE, height: colourHeight(size.height) };
    context.clearRect(0, 0, size.width, size.height);
    for (let i = 0; i < 256; ++i) {
      const word = colours[255 - i];
      context.fillStyle = `rgb(${word & 255} ${(word >>> 8) & 255} ${(word >>> 16) & 255})`;
      const from = Math.floor((bar.height * i) / 256);
      context.fillRect(0, bar.top + from, BAR_WIDTH, Math.ceil((bar.height * (i + 1)) / 256) - from);
    }
    context.fillStyle = ink;
    context.strokeStyle = ink;
    context.lineWidth = 1;
    context.font = '12px system-ui, "DejaVu Sans", sans-serif';
    context.textBaseline = "middle";
    const [first, last] = [shown.value(low), shown.value(high)];
    for (const { value, text } of ticks(first, last, Math.min(10, size.height / 40))) {
      const y = Math.round(bar.top + bar.height * (1 - (value - first) / (last - first))) + 0.5;
      context.beginPath();
      context.moveTo(BAR_WIDTH, y);
      context.lineTo(BAR_WIDTH + 5, y);
      context.stroke();
      context.fillText(text, BAR_WIDTH + 8, y, size.width - BAR_WIDTH - 8);
    }
    context.font = '600 12px system-ui, "DejaVu Sans", sans-serif';
    context.fillText(shown.symbol, 0, size.height - 8, size.width);
  }
}

function colourHeight(height: number): number {
  return Math.max(1, height - ABOVE - BELOW);
}
