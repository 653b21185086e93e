import assert from "node:assert/strict";
import { test } from "node:test";
import { csvField, RegionCsv } from "../src/csv";
import { FORM, parseHead, secondsOf, statusText, type Head } from "../src/head";
import type { Frame } from "../src/packing";
import { colourOf, kindOf, paint, paletteIndex, type Kind } from "../src/palette";
import { figuresOf, histogramOf, percentile, profileOf, ruleOf, sortedValues } from "../src/statistics";
import { Shown, ticks, type Scale } from "../src/units";

const frame: Frame = {
  width: 4,
  height: 2,
  values: Float32Array.from([1, 2, 3, 4, 9, NaN, 3, 4]),
  status: Uint8Array.from([0, 2, 0, 0, 8, 0, 0, 34]),
};
const head = {
  bin: 2,
  sourceWidth: 7,
  sourceHeight: 4,
  width: 4,
  height: 2,
  unit: "°C",
  difference: "K",
  step: 0.05,
  flags: [
    { bit: 2, key: "under", text: "below the range" },
    { bit: 32, key: "noData", text: "no data" },
  ],
  outsideBit: 1,
  underBit: 2,
  overBit: 4,
  noDataBit: 32,
  notCounted: 24,
  frames: [{ number: 7 }],
} as unknown as Head;

test("figures are of the numbers whose status lets them count", () => {
  const whole = figuresOf(frame, null, head);
  assert.deepEqual([whole.pixels, whole.counted, whole.good, whole.flagged], [8, 6, 5, [1, 1]]);
  const values = [1, 2, 3, 4, 3, 4];
  const mean = 17 / 6;
  assert.ok(Math.abs(whole.mean - mean) < 1e-12);
  assert.ok(Math.abs(whole.deviation - Math.sqrt(values.reduce((sum, v) => sum + v * v, 0) / 6 - mean * mean)) < 1e-12);
  assert.deepEqual([whole.minimum, whole.minimumAt, whole.maximum, whole.maximumAt], [1, { x: 0, y: 0 }, 4, { x: 3, y: 0 }]);
  const good = figuresOf(frame, null, ruleOf(head, true));
  assert.deepEqual([good.counted, good.mean, good.good], [4, 11 / 4, 5]);
  const none = figuresOf(frame, { kind: "rectangle", points: [{ x: 0, y: 1 }, { x: 1, y: 1 }] }, head);
  assert.deepEqual([none.pixels, none.counted, none.mean, none.minimumAt], [2, 0, NaN, null]);
});

test("profiles, percentiles and histograms leave out what does not count", () => {
  assert.deepEqual(profileOf(frame, [{ x: 0, y: 1 }, { x: 3, y: 1 }], head), [NaN, NaN, 3, 4]);
  const sorted = sortedValues(frame, null, head);
  assert.deepEqual([...sorted], [1, 2, 3, 3, 4, 4]);
  assert.deepEqual([0, 0.5, 1].map((share) => percentile(sorted, share)), [1, 3, 4]);
  assert.deepEqual(histogramOf(sorted, 3), { edges: [1, 2, 3], counts: [1, 1, 4] });
  assert.deepEqual(histogramOf(Float32Array.from([5, 5]), 2).counts, [2, 0]);
});

test("temperatures and their differences in four scales", () => {
  const cases: [Scale, string, string, string][] = [
    ["C", "-40.00 °C", "10.00", "K"],
    ["F", "-40.00 °F", "18.00", "°F"],
    ["K", "233.15 K", "10.00", "K"],
    ["R", "419.67 °R", "18.00", "°R"],
  ];
  for (const [scale, text, span, difference] of cases) {
    const shown = new Shown(head, scale);
    assert.deepEqual([shown.textWithUnit(-40), shown.spanText(10), shown.difference], [text, span, difference]);
    assert.ok(Math.abs(shown.packed(shown.value(36.6)) - 36.6) < 1e-9);
  }
  const radiance = new Shown({ unit: "W", difference: "W", step: 2e-9 }, null);
  assert.equal(radiance.textWithUnit(0.00123456), "0.0012346 W");
  assert.deepEqual(ticks(9.2, 31, 4).map(({ text }) => text), ["10", "20", "30"]);
  assert.deepEqual(ticks(0.1, 0.35, 5).map(({ text }) => text), ["0.10", "0.15", "0.20", "0.25", "0.30", "0.35"]);
});

test("colours of values and of what is no value", () => {
  assert.equal(colourOf("12abEF"), 0xffefab12);
  assert.deepEqual([-5, 10, 15, 20, 99].map((value) => paletteIndex(value, 10, 20)), [0, 0, 128, 255, 255]);
  const painting = { palette: new Uint32Array(256), low: 10, high: 20, markBeyond: false };
  const cases: [value: number, status: number, kind: Kind, marked: Kind][] = [
    [15, 1, "uncalibrated", "uncalibrated"],
    [5, 0, "shown", "below"],
    [25, 0, "shown", "above"],
    [5, 2, "under", "under"],
    [15, 4, "over", "over"],
    [15, 32 | 2, "noData", "noData"],
    [NaN, 0, "noData", "noData"],
  ];
  for (const [value, status, kind, marked] of cases) {
    assert.equal(kindOf(value, status, head, painting), kind, `${value} ${status}`);
    assert.equal(kindOf(value, status, head, { ...painting, markBeyond: true }), marked, `${value} ${status} marked`);
  }
  // Outside the calibration, slanted lines of ink go over the colours: here over the first and the sixth pixel.
  const [words, uncalibrated] = [new Uint32Array(7), { width: 7, height: 1, values: new Float32Array(7).fill(15), status: new Uint8Array(7).fill(1) }];
  const coloured = { ...painting, palette: new Uint32Array(256).fill(0xff223344) };
  assert.equal(paint(words, uncalibrated, { ...head, colours: {} } as Head, coloured).uncalibrated, 7);
  assert.deepEqual([...words.keys()].filter((i) => words[i] === 0xffffffff), [0, 5]);
});

test("lines of figures stand in the unit shown and in pixels of the source", () => {
  const csv = new RegionCsv(head, new Shown(head, "F"));
  const region = { id: 0, name: 'a "b", c', kind: "rectangle" as const, points: [{ x: 2, y: 0 }, { x: 3, y: 1 }] };
  csv.add(0, region, figuresOf(frame, region, head));
  const line = csv.text().split("\n")[1];
  assert.equal(line, '7,,"a ""b"", c",rectangle,4,0,3,4,4,37.4,39.2,38.3,0.9,4,0,6,0,3,0,1');
  assert.equal(csvField("plain"), "plain");
});

test("times, statuses and pages of a later form", () => {
  const times = ["2026-11-21T08:15:00.250000Z", "2026-11-21T08:15:00.250125Z", "2026-11-21T08:15:02Z"];
  assert.deepEqual(secondsOf(times.map((time, number) => ({ number, time }))), [0, 0.000125, 1.75]);
  assert.equal(secondsOf([{ number: 0, time: times[0] }, { number: 1 }]), null);
  assert.equal(statusText(head, 0), "good");
  assert.equal(statusText(head, 2 | 64), "below the range, status 66");
  assert.throws(() => parseHead(`{"form": ${FORM + 1}}`), /form 3/);
});
