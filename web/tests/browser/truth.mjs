// Pages to be tested, and what the tool says of the same frames without a page.
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, statSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

const TOOL = process.env.OVIX ?? new URL("../../../build/release/bin/ovix", import.meta.url).pathname;
const FOLDER = mkdtempSync(join(tmpdir(), "ovix-page-"));
const PLAIN = ["--pixel-type", "K410 IR (F7M0)", "--size"];

process.on("exit", () => rmSync(FOLDER, { recursive: true }));

export const inFolder = (name) => join(FOLDER, name);
export const bytesOf = (name) => statSync(inFolder(name)).size;
export const tool = (...words) => execFileSync(TOOL, words, { cwd: FOLDER, encoding: "utf8", stdio: ["ignore", "pipe", "pipe"] });

/** Raw frames with their pixel type, as options. */
export function makeFrames(name, count, size, ...more) {
  tool("synth", "--pixel-type", PLAIN[1], "--size", size, "--count", String(count), ...more, "-o", name);
  return [name, ...PLAIN, size];
}

/** The numbers of an NPY file. */
export function readNpy(name) {
  const bytes = readFileSync(inFolder(name));
  const start = 10 + bytes.readUInt16LE(8);
  const data = bytes.buffer.slice(bytes.byteOffset + start, bytes.byteOffset + bytes.length);
  return bytes.toString("latin1", 10, start).includes("<f4") ? new Float32Array(data) : new Uint8Array(data);
}

/** Lines of a CSV text as records of its columns; no field of these files holds a comma. */
export function readCsv(text) {
  const [columns, ...lines] = text.trim().split("\n").map((line) => line.split(","));
  return lines.map((line) => Object.fromEntries(line.map((field, i) => [columns[i], field])));
}

export function headOf(name) {
  const page = readFileSync(inFolder(name), "utf8");
  return JSON.parse(/<script id="ovix-head"[^>]*>(.*?)<\/script>/s.exec(page)[1]);
}
