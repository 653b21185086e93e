/** Figures of regions, profiles of lines, histograms and percentiles. */

import type { Frame } from "./packing";
import type { StatusFlag } from "./head";
import { linePixels, runsOf, type Point, type Region, type Run } from "./regions";

/** Of one region of one frame, in the packed unit. Without counted pixels the five figures are NaN. */
export interface Figures {
  /** Of the region inside the frame. */
  pixels: number;
  /** Those of which the figures are made: numbers whose status does not exclude them. */
  counted: number;
  /** Those without any flag. */
  good: number;
  /** Those whose heaviest flag, the one of the highest bit, is each: with `good`, each pixel once, as in `ovix stats`. */
  flagged: number[];
  minimum: number;
  maximum: number;
  mean: number;
  /** Of the whole: divided by the count. */
  deviation: number;
  /** Of equal values the first in rows from the top. */
  minimumAt: Point | null;
  maximumAt: Point | null;
}

export interface CountingRule {
  flags: readonly StatusFlag[];
  /** Bits that keep a pixel out of the figures. */
  notCounted: number;
}

/** Either good pixels alone, or all that the head lets count. */
export function ruleOf({ flags, notCounted }: CountingRule, goodOnly: boolean): CountingRule {
  return { flags, notCounted: goodOnly ? 255 : notCounted };
}

/** The figures of a region, or of the whole frame for null. */
export function figuresOf(frame: Frame, region: Pick<Region, "kind" | "points"> | null, rule: CountingRule): Figures {
  const runs = region ? runsOf(region, frame.width, frame.height) : wholeFrame(frame);
  const ofStatus = new Uint32Array(256);
  let counted = 0;
  let sum = 0;
  let [minimum, maximum, minimumIndex, maximumIndex] = [Infinity, -Infinity, -1, -1];
  eachPixel(frame, runs, (value, status, index) => {
    ++ofStatus[status];
    if (!isCounted(value, status, rule)) return;
    ++counted;
    sum += value;
    if (value < minimum) {
      minimum = value;
      minimumIndex = index;
    }
    if (value > maximum) {
      maximum = value;
      maximumIndex = index;
    }
  });
  const mean = sum / counted;
  let squares = 0;
  eachPixel(frame, runs, (value, status) => {
    if (isCounted(value, status, rule)) squares += (value - mean) ** 2;
  });
  const at = (index: number) => (index < 0 ? null : { x: index % frame.width, y: Math.floor(index / frame.width) });
  return {
    pixels: countOf(runs),
    counted,
    good: ofStatus[0],
    flagged: rule.flags.map(({ bit }) => ofStatus.slice(bit, 2 * bit).reduce((n, of) => n + of, 0)),
    minimum: counted ? minimum : NaN,
    maximum: counted ? maximum : NaN,
    mean,
    deviation: Math.sqrt(squares / counted),
    minimumAt: at(minimumIndex),
    maximumAt: at(maximumIndex),
  };
}

function isCounted(value: number, status: number, rule: CountingRule): boolean {
  return Number.isFinite(value) && !(status & rule.notCounted);
}

function wholeFrame({ width, height }: Frame): Run[] {
  return Array.from({ length: height }, (_, y) => ({ y, x0: 0, x1: width - 1 }));
}

function countOf(runs: readonly Run[]): number {
  return runs.reduce((n, { x0, x1 }) => n + x1 - x0 + 1, 0);
}

function eachPixel(frame: Frame, runs: readonly Run[], visit: (value: number, status: number, index: number) => void): void {
  for (const { y, x0, x1 } of runs) {
    const end = y * frame.width + x1;
    for (let i = end - x1 + x0; i <= end; ++i) visit(frame.values[i], frame.status[i], i);
  }
}

/** The values along a line, NaN where a pixel does not count. */
export function profileOf(frame: Frame, line: readonly Point[], rule: CountingRule): number[] {
  return linePixels(line).map(({ x, y }) => {
    const i = y * frame.width + x;
    return isCounted(frame.values[i], frame.status[i], rule) ? frame.values[i] : NaN;
  });
}

/** The counted values of a region, or of the whole frame for null, in ascending order. */
export function sortedValues(frame: Frame, region: Pick<Region, "kind" | "points"> | null, rule: CountingRule): Float32Array {
  const runs = region ? runsOf(region, frame.width, frame.height) : wholeFrame(frame);
  const values = new Float32Array(countOf(runs));
  let n = 0;
  eachPixel(frame, runs, (value, status) => {
    if (isCounted(value, status, rule)) values[n++] = value;
  });
  return values.subarray(0, n).sort();
}

/** The value below which a share of the values lie; NaN for none. `sorted` ascends. */
export function percentile(sorted: Float32Array, share: number): number {
  if (sorted.length === 0) return NaN;
  return sorted[Math.round(share * (sorted.length - 1))];
}

/** How many values fall between the equal steps from the lowest to the highest. `sorted` ascends. */
export function histogramOf(sorted: Float32Array, bins: number): { edges: number[]; counts: number[] } {
  if (sorted.length === 0) return { edges: [], counts: [] };
  const [low, high] = [sorted[0], sorted[sorted.length - 1]];
  const width = (high - low) / bins || 1;
  const counts = new Array<number>(bins).fill(0);
  for (const value of sorted) ++counts[Math.min(bins - 1, Math.floor((value - low) / width))];
  return { edges: counts.map((_, i) => low + i * width), counts };
}
