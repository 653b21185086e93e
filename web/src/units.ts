/** Temperature scales, and numbers for a reader. */

export type Scale = "C" | "F" | "K" | "R";

interface ScaleFacts {
  symbol: string;
  /** Symbol of a difference. */
  difference: string;
  factor: number;
  /** Of 0 degrees Celsius. */
  offset: number;
}

export const SCALES: Readonly<Record<Scale, ScaleFacts>> = {
  C: { symbol: "°C", difference: "K", factor: 1, offset: 0 },
  F: { symbol: "°F", difference: "°F", factor: 1.8, offset: 32 },
  K: { symbol: "K", difference: "K", factor: 1, offset: 273.15 },
  R: { symbol: "°R", difference: "°R", factor: 1.8, offset: 491.67 },
};

/** How packed values are shown: a line from one unit to the other, with its symbols and digits. */
export class Shown {
  readonly symbol: string;
  readonly difference: string;
  private readonly factor: number;
  private readonly offset: number;
  private readonly digits: number;
  private readonly plain: boolean;

  /** `scale` is null for values that are no temperatures; those stay as they are. */
  constructor(unit: { unit: string; difference: string; step: number }, scale: Scale | null) {
    const facts = scale ? SCALES[scale] : null;
    this.symbol = facts?.symbol ?? unit.unit;
    this.difference = facts?.difference ?? unit.difference;
    this.factor = facts?.factor ?? 1;
    this.offset = facts?.offset ?? 0;
    this.digits = Math.max(0, Math.ceil(-Math.log10(unit.step * this.factor) - 1e-9));
    this.plain = this.digits <= 6;
  }

  value(packed: number): number {
    return packed * this.factor + this.offset;
  }
  packed(shown: number): number {
    return (shown - this.offset) / this.factor;
  }
  /** Of a difference or a deviation. */
  span(packed: number): number {
    return packed * this.factor;
  }

  /** With as many digits as the step is worth, and `more`. */
  text(packed: number, more = 0): string {
    return this.number(this.value(packed), more);
  }
  spanText(packed: number, more = 0): string {
    return this.number(this.span(packed), more);
  }
  textWithUnit(packed: number): string {
    return `${this.text(packed)} ${this.symbol}`;
  }
  private number(shown: number, more: number): string {
    if (!Number.isFinite(shown)) return "–";
    return this.plain ? shown.toFixed(this.digits + more) : shown.toPrecision(5 + more);
  }
}

/** Round values from low to high, about as many as wanted. */
export function ticks(low: number, high: number, wanted: number): { value: number; text: string }[] {
  const rough = (high - low) / Math.max(1, wanted);
  if (!(rough > 0) || !Number.isFinite(rough)) return [{ value: low, text: String(low) }];
  const decade = 10 ** Math.floor(Math.log10(rough));
  const step = [1, 2, 5, 10].map((times) => times * decade).find((width) => width >= rough * (1 - 1e-9)) ?? 10 * decade;
  const digits = Math.max(0, -Math.floor(Math.log10(step) + 1e-9));
  const result = [];
  for (let n = Math.ceil(low / step - 1e-6); n * step <= high + 1e-6 * step; ++n) {
    result.push({ value: n * step, text: digits <= 6 ? (n * step + 0).toFixed(digits) : (n * step).toPrecision(4) });
  }
  return result;
}
