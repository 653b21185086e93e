/** What is seen as comma-separated values. Columns bear their units; numbers have all the digits that they are worth. */

import type { Head } from "./head";
import type { Frame } from "./packing";
import { boundsOf, type Region } from "./regions";
import type { Figures } from "./statistics";
import type { Shown } from "./units";

export function csvField(text: string): string {
  return /[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
}

/** The figures of regions over frames: one line a region and frame, places in pixels of the source. */
export class RegionCsv {
  private readonly lines: string[];

  constructor(
    private readonly head: Head,
    private readonly shown: Shown,
  ) {
    const inUnit = (name: string) => csvField(`${name} (${shown.symbol})`);
    const deviation = csvField(`std (${shown.difference})`);
    this.lines = [
      ["frame", "time", "region", "kind", "x (px)", "y (px)", "width (px)", "height (px)", "counted (px)"]
        .concat(inUnit("min"), inUnit("max"), inUnit("mean"), deviation)
        .concat("min x (px)", "min y (px)", "max x (px)", "max y (px)", "good (px)")
        .concat(head.flags.map((flag) => `${flag.key} (px)`))
        .join(","),
    ];
  }

  /** `region` is null for the whole frame. */
  add(index: number, region: Region | null, figures: Figures): void {
    const { head, shown } = this;
    const { number, time } = head.frames[index];
    const bounds = region ? boundsOf(region) : { x: 0, y: 0, width: head.width, height: head.height };
    const value = (packed: number) => (figures.counted ? exact(shown.value(packed)) : "");
    const places = [figures.minimumAt, figures.maximumAt].flatMap((at) => (at ? [at.x, at.y] : [NaN, NaN]));
    this.lines.push(
      [
        [number, time ?? "", csvField(region?.name ?? "frame"), region?.kind ?? "frame"],
        [...sourceArea(head, bounds), figures.counted],
        [value(figures.minimum), value(figures.maximum), value(figures.mean)],
        figures.counted ? exact(shown.span(figures.deviation)) : "",
        places.map((place) => (Number.isNaN(place) ? "" : place * head.bin)),
        [figures.good, ...figures.flagged],
      ]
        .flat()
        .join(","),
    );
  }

  text(): string {
    return this.lines.join("\n") + "\n";
  }
}

/** A rectangle of the page as x, y, width, height in the source, which may end before the last binned pixel does. */
function sourceArea({ bin, sourceWidth, sourceHeight }: Head, area: { x: number; y: number; width: number; height: number }): number[] {
  const [x, y] = [area.x * bin, area.y * bin];
  return [x, y, Math.min(area.width * bin, sourceWidth - x), Math.min(area.height * bin, sourceHeight - y)];
}

/** The pixels of a rectangle of a frame: one line a row. */
export function frameCsv(head: Head, frame: Frame, index: number, shown: Shown, area: { x: number; y: number; width: number; height: number }): string {
  const columns = Array.from({ length: area.width }, (_, i) => csvField(`x${(area.x + i) * head.bin} [${shown.symbol}]`));
  const lines = [["frame", "y (px)", ...columns].join(",")];
  for (let y = area.y; y < area.y + area.height; ++y) {
    const row = frame.values.subarray(y * frame.width + area.x, y * frame.width + area.x + area.width);
    const texts = Array.from(row, (value) => (Number.isFinite(value) ? exact(shown.value(value)) : ""));
    lines.push([head.frames[index].number, y * head.bin, ...texts].join(","));
  }
  return lines.join("\n") + "\n";
}

/** Nine digits: more than a single-precision value holds, and none of what a double adds to it. */
function exact(value: number): string {
  return String(Number(value.toPrecision(9)));
}
