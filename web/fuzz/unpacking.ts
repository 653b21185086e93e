/**
 * Any bytes as a frame of the page, for so many seconds: `npm run fuzz -- 60`. What is of another size or form is
 * refused with an error; the rest gives all pixels, with the values that plain arithmetic finds one after the other.
 */

import { argv, exit } from "node:process";
import { deflateSync } from "node:zlib";
import { frameOf, unpackFrame, type Frame } from "../src/packing";

/** A stream of numbers that a seed repeats. */
class Random {
  constructor(private state: number) {}

  below(most: number): number {
    this.state = (Math.imul(this.state, 1664525) + 1013904223) >>> 0;
    return Math.floor((this.state / 2 ** 32) * most);
  }
}

interface Input {
  bytes: Uint8Array;
  width: number;
  height: number;
  step: number;
}

const TELLING = [0, 1, 2, 127, 128, 254, 255];

/** Mostly frames that are whole, with bytes that tell; some of a wrong head, some cut or longer. */
function inputOf(random: Random): Input {
  const width = random.below(12);
  const height = random.below(12);
  const planes = 1 + random.below(4);
  const gaps = random.below(2);
  const wrong = random.below(8);
  const size = 2 + width * height * (planes + gaps + 1);
  const bytes = new Uint8Array(wrong === 0 ? random.below(2 * size) : size);
  for (let i = 0; i < bytes.length; ++i) bytes[i] = random.below(2) ? TELLING[random.below(TELLING.length)] : random.below(256);
  if (wrong !== 1) bytes.set([planes, gaps].slice(0, bytes.length));
  return { bytes, width, height, step: [1, 0.5, 0.01, 1e-30][random.below(4)] };
}

/** Whether the format's page allows it. */
function isWhole({ bytes, width, height }: Input): boolean {
  return bytes[0] >= 1 && bytes[0] <= 4 && bytes[1] <= 1 && bytes.length === 2 + width * height * (bytes[0] + bytes[1] + 1);
}

function require(holds: boolean, what: string, input: Input): void {
  if (holds) return;
  console.log(`fuzz: ${what}: ${input.width} x ${input.height}, step ${input.step}, bytes ${input.bytes.join(",")}`);
  exit(1);
}

function requirePixels(frame: Frame, input: Input): void {
  const { bytes, width, height, step } = input;
  const size = width * height;
  const [planes, gaps] = bytes;
  require(frame.values.length === size && frame.status.length === size, "pixels are missing", input);
  const sums: bigint[] = [];
  for (let i = 0; i < size; ++i) {
    let code = 0n;
    for (let plane = 0; plane < planes; ++plane) code = code * 256n + BigInt(bytes[2 + plane * size + i]);
    const difference = code % 2n ? -(code + 1n) / 2n : code / 2n;
    const before = i % width ? sums[i - 1] : i ? sums[i - width] : 0n;
    sums.push(BigInt.asIntN(32, before + difference));
    const gap = gaps === 1 && bytes[2 + planes * size + i] !== 0;
    const expected = gap ? NaN : Math.fround(Number(sums[i]) * step);
    require(Object.is(frame.values[i] + 0, expected + 0), `pixel ${i} is ${frame.values[i]} and not ${expected}`, input);
    require(frame.status[i] === bytes[2 + (planes + gaps) * size + i], `status ${i} is another`, input);
  }
}

async function unpacked(input: Input, packed: boolean): Promise<Frame | undefined> {
  const { bytes, width, height, step } = input;
  try {
    if (!packed) return frameOf(bytes, width, height, step);
    return await unpackFrame(deflateSync(bytes).toString("base64"), width, height, step);
  } catch (error) {
    require(error instanceof Error && /are no frame of/.test(error.message), `another error: ${error}`, input);
    return undefined;
  }
}

const seconds = Number(argv[2] ?? 60);
const seed = Number(argv[3] ?? Date.now() % 2 ** 31);
const random = new Random(seed);
const begin = Date.now();
let executions = 0;
while (Date.now() - begin < 1000 * seconds) {
  for (let i = 0; i < 1000; ++i, ++executions) {
    const input = inputOf(random);
    const frame = await unpacked(input, i % 100 === 0);
    require((frame !== undefined) === isWhole(input), frame ? "is taken" : "is refused", input);
    if (frame) requirePixels(frame, input);
  }
}
const speed = Math.round((1000 * executions) / (Date.now() - begin));
console.log(`${"page_unpacking".padEnd(24)} ${executions} executions ${speed}/s, seed ${seed}: nothing found`);
