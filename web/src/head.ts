/** What the page says of its frames: the JSON that `ovix report` puts behind them. */

import type { Kind } from "./palette";
import type { RegionKind } from "./regions";
import type { Scale } from "./units";

/** One bit of the status byte that stands beside each pixel. */
export interface StatusFlag {
  bit: number;
  /** In CSV. */
  key: string;
  /** For a reader. */
  text: string;
}

export interface FrameFacts {
  /** In the source, from 0. */
  number: number;
  /** UTC, ISO 8601; not there when the frame carries none. */
  time?: string;
  counter?: number;
  preset?: number;
}

/** A table of facts: the scene, the calibration, findings, provenance. */
export interface FactSection {
  title: string;
  columns: string[];
  rows: string[][];
}

/** A region to begin with, in pixels of the source. */
export interface GivenRegion {
  name: string;
  kind: RegionKind;
  /** As those of `Region`, but for a circle its centre alone. */
  points: [x: number, y: number][];
  /** Of a circle. */
  radius?: number;
}

export interface Head {
  form: number;
  generator: string;
  title: string;
  subtitle: string;
  /** Of the frames in the page: those of the source divided by `bin`, rounded up. */
  width: number;
  height: number;
  sourceWidth: number;
  sourceHeight: number;
  /** Pixels of the source on a side that make one of the page. */
  bin: number;
  quantity: string;
  /** Symbol of the unit in which the values are packed; degrees Celsius for temperatures. */
  unit: string;
  /** Symbol of a difference or a deviation. */
  difference: string;
  /** The scale to begin with; null where the values are no temperatures. */
  scale: Scale | null;
  /** Between two neighbouring values, in `unit`. */
  step: number;
  /** The ends of the colour bar to begin with, which suit all frames; null when no pixel has a value. */
  range: [low: number, high: number] | null;
  flags: StatusFlag[];
  outsideBit: number;
  underBit: number;
  overBit: number;
  noDataBit: number;
  /** Bits that keep a pixel out of the figures. */
  notCounted: number;
  frames: FrameFacts[];
  regions: GivenRegion[];
  /** 256 colours each, six hexadecimal digits a colour. */
  palettes: { name: string; colours: string }[];
  /** Of pixels that are not in the palette: below or above its ends, under or over what can be measured, no data. */
  colours: Record<Exclude<Kind, "shown" | "uncalibrated">, string>;
  facts: FactSection[];
}

export const FORM = 2;

/** The head of a page. Throws an `Error` for a page of a later form. */
export function parseHead(json: string): Head {
  const head = JSON.parse(json) as Head;
  if (head.form !== FORM) throw new Error(`the data of this page have form ${head.form}, its program reads form ${FORM}`);
  return head;
}

/** Seconds from the first frame to each, or null when a frame carries no time. */
export function secondsOf(frames: readonly FrameFacts[]): number[] | null {
  const millis = frames.map((frame) => (frame.time === undefined ? NaN : microseconds(frame.time)));
  if (millis.some(Number.isNaN)) return null;
  return millis.map((value) => (value - millis[0]) / 1e6);
}

/** A date knows milliseconds only; the digits after them are added. */
function microseconds(time: string): number {
  const digits = /\.(\d+)/.exec(time)?.[1] ?? "";
  const whole = Date.parse(time.replace(/\.\d+/, ""));
  return whole * 1000 + Number(digits.padEnd(6, "0").slice(0, 6));
}

/** The words of a status byte. */
export function statusText(head: Head, status: number): string {
  const words = head.flags.filter((flag) => status & flag.bit).map((flag) => flag.text);
  const known = head.flags.reduce((bits, flag) => bits | flag.bit, 0);
  if (status & ~known) words.push(`status ${status}`);
  return words.length > 0 ? words.join(", ") : "good";
}
