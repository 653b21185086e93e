import assert from "node:assert/strict";
import { test } from "node:test";
import { deflateSync } from "node:zlib";
import { frameOf, unpackFrame } from "../src/packing";

/** 3 x 2 pixels in steps of 0.5: 10, 10.5, 9 over 200, no number, -1, as bytes written by hand. */
const ZIGZAG = [40, 2, 5, 760, 0, 803];
const PIXELS = [10, 10.5, 9, 200, NaN, -1];
const STATUS = [0, 2, 0, 4, 32, 0];
const BYTES = [2, 1, ...ZIGZAG.map((word) => word >> 8), ...ZIGZAG.map((word) => word & 255), 0, 0, 0, 0, 1, 0, ...STATUS];

test("a frame comes back from its base64 text", async () => {
  const frame = await unpackFrame(deflateSync(Uint8Array.from(BYTES)).toString("base64"), 3, 2, 0.5);
  assert.deepEqual([...frame.values], PIXELS);
  assert.deepEqual([...frame.status], STATUS);
});

test("four planes hold the ends of 32 bits and wrap between them", () => {
  // From 0 to the most negative number, and from there one down to the largest.
  const bytes = [4, 0, 255, 0, 255, 0, 255, 0, 255, 1, 0, 0];
  assert.deepEqual([...frameOf(Uint8Array.from(bytes), 2, 1, 1).values], [-2147483648, 2147483648].map(Math.fround));
});

test("bytes of another size or form are refused", () => {
  const changed: Record<string, number[]> = {
    "one less": BYTES.slice(0, -1),
    "no plane": [0, ...BYTES.slice(1)],
    "five planes": [5, 0, ...new Array<number>(6 * 6).fill(0)],
    "unknown gaps": [2, 2, ...BYTES.slice(2), ...new Array<number>(6).fill(0)],
    nothing: [],
  };
  for (const [what, bytes] of Object.entries(changed)) {
    assert.throws(() => frameOf(Uint8Array.from(bytes), 3, 2, 0.5), /are no frame of 3 x 2/, what);
  }
});
