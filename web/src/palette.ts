/** Colours of pixels. */

import type { Frame } from "./packing";
import type { Head } from "./head";

/** Colours as the bytes of an `ImageData` in one little-endian word: 0xAABBGGRR. */
export type Palette = Uint32Array;

export function colourOf(rgb: string): number {
  const value = parseInt(rgb, 16);
  return (0xff000000 | ((value & 0xff) << 16) | (value & 0xff00) | (value >>> 16)) >>> 0;
}

/** From six hexadecimal digits a colour. */
export function paletteOf(colours: string): Palette {
  return Uint32Array.from(colours.match(/.{6}/g) ?? [], colourOf);
}

/** The place of a value among the colours; values beyond the ends are taken at the ends. */
export function paletteIndex(value: number, low: number, high: number): number {
  const share = (value - low) / (high - low);
  return Math.round(255 * Math.min(1, Math.max(0, share)));
}

/** Below and above are a matter of the colour bar, under and over one of the camera. */
export type Kind = "shown" | "uncalibrated" | "below" | "above" | "under" | "over" | "noData";

export interface Painting {
  palette: Palette;
  low: number;
  high: number;
  /** Values beyond the ends of the bar take colours of their own. */
  markBeyond: boolean;
}

/** What a pixel is drawn as. A status says more than a value; no data says most. */
export function kindOf(value: number, status: number, head: Head, painting: Painting): Kind {
  if (Number.isNaN(value) || status & head.noDataBit) return "noData";
  if (status & head.underBit) return "under";
  if (status & head.overBit) return "over";
  if (painting.markBeyond && value < painting.low) return "below";
  if (painting.markBeyond && value > painting.high) return "above";
  return status & head.outsideBit ? "uncalibrated" : "shown";
}

/** Whether it takes its colour from the palette. */
export function isShown(kind: Kind): kind is "shown" | "uncalibrated" {
  return kind === "shown" || kind === "uncalibrated";
}

/** Pixels between two lines of the hatching. */
const HATCH = 5;

/** Black on a bright colour, white on a dark one. */
function inkOn(colour: number): number {
  const [red, green, blue] = [colour & 0xff, (colour >>> 8) & 0xff, (colour >>> 16) & 0xff];
  return 2 * red + 5 * green + blue > 8 * 110 ? 0xff000000 : 0xffffffff;
}

/**
 * Draws a frame into the words of an image of its size; answers how many pixels are of each kind. Those outside the
 * calibrated range are hatched, as in the pictures of `ovix convert`.
 */
export function paint(words: Uint32Array, frame: Frame, head: Head, painting: Painting): Record<Kind, number> {
  const count = { shown: 0, uncalibrated: 0, below: 0, above: 0, under: 0, over: 0, noData: 0 };
  const special = Object.fromEntries(Object.entries(head.colours).map(([kind, rgb]) => [kind, colourOf(rgb)]));
  const { palette, low, high } = painting;
  for (let i = 0; i < words.length; ++i) {
    const value = frame.values[i];
    const kind = kindOf(value, frame.status[i], head, painting);
    words[i] = isShown(kind) ? palette[paletteIndex(value, low, high)] : special[kind];
    if (kind === "uncalibrated" && ((i % frame.width) + Math.floor(i / frame.width)) % HATCH === 0) words[i] = inkOn(words[i]);
    ++count[kind];
  }
  return count;
}
