import assert from "node:assert/strict";
import { test } from "node:test";
import { boundsOf, edgeOf, linePixels, movedBy, runsOf, withPoint, type Point, type Region, type RegionKind } from "../src/regions";

const SIDE = 9;
const region = (kind: RegionKind, ...points: [number, number][]): Region => ({
  id: 0,
  name: "",
  kind,
  points: points.map(([x, y]) => ({ x, y })),
});

/** The pixels of a region as a drawing. */
function drawing(one: Region): string {
  const rows = Array.from({ length: SIDE }, () => new Array<string>(SIDE).fill("."));
  for (const { y, x0, x1 } of runsOf(one, SIDE, SIDE)) for (let x = x0; x <= x1; ++x) rows[y][x] = rows[y][x] === "." ? "#" : "2";
  return rows.map((row) => row.join("")).join("\n").replace(/\n(\.{9}\n?)+$/, "");
}

test("regions are the pixels that their drawings show", () => {
  const cases: [Region, string][] = [
    [region("spot", [2, 1]), ".........\n..#......"],
    [region("rectangle", [3, 1], [1, 0]), ".###.....\n.###....."],
    [region("rectangle", [-5, -5], [1, 1]), "##.......\n##......."],
    [region("line", [0, 0], [6, 2]), "##.......\n..###....\n.....##.."],
    [region("line", [2, 2], [0, 0]), "#........\n.#.......\n..#......"],
    [region("circle", [3, 3], [3, 1]), ".........\n...#.....\n..###....\n.#####...\n..###....\n...#....."],
    [region("circle", [0, 0], [1, 1]), "##.......\n##......."],
    [region("polygon", [0, 0], [6, 0], [0, 3]), "#######..\n######...\n####.....\n##......."],
    [region("polygon", [1, 0], [4, 0], [4, 3], [1, 3]), ".####....\n.####....\n.####....\n.####...."],
    // A bow: the crossing belongs to the outline, and left and right of it nothing is surrounded.
    [region("polygon", [0, 0], [4, 4], [4, 0], [0, 4]), "#...#....\n##.##....\n#####....\n##.##....\n#...#...."],
  ];
  for (const [one, expected] of cases) assert.equal(drawing(one), expected, JSON.stringify(one));
});

test("a line has one pixel for each step of its longer side, in its direction", () => {
  const pixels = linePixels([{ x: 5, y: 1 }, { x: 1, y: 3 }]);
  assert.deepEqual(pixels.map(({ x }) => x), [5, 4, 3, 2, 1]);
  assert.deepEqual([pixels[0].y, pixels[4].y], [1, 3]);
});

test("a radius need not be a whole number, nor lie in the frame", () => {
  // 6 = 2.45 squared: 5 is the greatest sum of two squares up to it, 3.2 squared holds 10 = 9 + 1, 0.9 the centre alone.
  const cases: [number, Point][] = [[2.45, { x: 6, y: 5 }], [3.2, { x: 7, y: 5 }], [0.9, { x: 4, y: 4 }], [5, { x: -1, y: 4 }]];
  for (const [radius, edge] of cases) assert.deepEqual(edgeOf({ x: 4, y: 4 }, radius, SIDE, SIDE), edge, String(radius));
});

test("regions move as a whole and stay in the frame", () => {
  const one = region("rectangle", [1, 1], [3, 2]);
  const corners = (moved: Region): Point[] => moved.points;
  assert.deepEqual(corners(movedBy(one, 2, -9, SIDE, SIDE)), [{ x: 3, y: 0 }, { x: 5, y: 1 }]);
  assert.deepEqual(corners(movedBy(one, 99, 99, SIDE, SIDE)), [{ x: 6, y: 7 }, { x: 8, y: 8 }]);
  assert.deepEqual(corners(withPoint(one, 1, { x: 20, y: 0 }, SIDE, SIDE)), [{ x: 1, y: 1 }, { x: 8, y: 0 }]);
  assert.deepEqual(boundsOf(region("circle", [4, 4], [4, 6])), { x: 2, y: 2, width: 5, height: 5 });
});
