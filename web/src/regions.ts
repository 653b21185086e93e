/** Regions of a frame: five kinds, each told by points that are pixels. */

export interface Point {
  x: number;
  y: number;
}

export type RegionKind = "spot" | "line" | "rectangle" | "circle" | "polygon";

export interface Region {
  id: number;
  name: string;
  kind: RegionKind;
  /**
   * Spot: itself. Line: its ends. Rectangle: two opposite corners, both inside. Circle: the centre and a pixel on its
   * edge. Polygon: its corners.
   */
  points: Point[];
}

/**
 * A pixel on the edge of a circle that holds the same pixels as one of this radius, which need not be a whole number:
 * the furthest one that is not beyond it. To that side of the centre which lies in the frame, if one does.
 */
export function edgeOf(centre: Point, radius: number, width: number, height: number): Point {
  let [dx, dy] = [0, 0];
  for (let y = 0; y <= radius; ++y) {
    const x = Math.floor(Math.sqrt(radius * radius - y * y));
    if (x * x + y * y > dx * dx + dy * dy) [dx, dy] = [x, y];
  }
  return { x: centre.x + (centre.x + dx < width ? dx : -dx), y: centre.y + (centre.y + dy < height ? dy : -dy) };
}

/** How many points make a region of the kind; a polygon takes as many as it gets. */
export const POINTS: Readonly<Record<RegionKind, number>> = { spot: 1, line: 2, rectangle: 2, circle: 2, polygon: Infinity };

/** Pixels of one row, from x0 up to and with x1. */
export interface Run {
  y: number;
  x0: number;
  x1: number;
}

/** The pixels of a line in their order: one for each step along its longer side. */
export function linePixels([a, b]: readonly Point[]): Point[] {
  const steps = Math.max(Math.abs(b.x - a.x), Math.abs(b.y - a.y));
  if (steps === 0) return [a];
  return Array.from({ length: steps + 1 }, (_, i) => ({
    x: Math.round(a.x + ((b.x - a.x) * i) / steps),
    y: Math.round(a.y + ((b.y - a.y) * i) / steps),
  }));
}

/**
 * The pixels of a region in rows from the top, clipped to the frame. Circle: those whose centres are as near to the
 * middle as its edge point. Polygon: those of its outline and those whose centres it surrounds (even-odd).
 */
export function runsOf(region: Pick<Region, "kind" | "points">, width: number, height: number): Run[] {
  const runs = unclippedRuns(region);
  return runs
    .map(({ y, x0, x1 }) => ({ y, x0: Math.max(0, x0), x1: Math.min(width - 1, x1) }))
    .filter(({ y, x0, x1 }) => y >= 0 && y < height && x0 <= x1);
}

function unclippedRuns({ kind, points }: Pick<Region, "kind" | "points">): Run[] {
  switch (kind) {
    case "spot":
      return [{ y: points[0].y, x0: points[0].x, x1: points[0].x }];
    case "line":
      return merged(linePixels(points).map(({ x, y }) => ({ y, x0: x, x1: x })));
    case "rectangle":
      return rectangleRuns(points);
    case "circle":
      return circleRuns(points);
    case "polygon":
      return polygonRuns(points);
  }
}

function rectangleRuns([a, b]: readonly Point[]): Run[] {
  const [x0, x1] = [Math.min(a.x, b.x), Math.max(a.x, b.x)];
  const [y0, y1] = [Math.min(a.y, b.y), Math.max(a.y, b.y)];
  return Array.from({ length: y1 - y0 + 1 }, (_, i) => ({ y: y0 + i, x0, x1 }));
}

function circleRuns([centre, edge]: readonly Point[]): Run[] {
  const square = (edge.x - centre.x) ** 2 + (edge.y - centre.y) ** 2;
  const reach = Math.floor(Math.sqrt(square));
  return Array.from({ length: 2 * reach + 1 }, (_, i) => {
    const dx = Math.floor(Math.sqrt(square - (i - reach) ** 2));
    return { y: centre.y + i - reach, x0: centre.x - dx, x1: centre.x + dx };
  });
}

function polygonRuns(points: readonly Point[]): Run[] {
  const edges = points.map((point, i) => [point, points[(i + 1) % points.length]]);
  const outline = edges.flatMap((edge) => linePixels(edge).map(({ x, y }) => ({ y, x0: x, x1: x })));
  const rows = points.map((point) => point.y);
  const inside: Run[] = [];
  for (let y = Math.min(...rows); y <= Math.max(...rows); ++y) {
    const crossings = edges
      .filter(([a, b]) => a.y <= y !== b.y <= y)
      .map(([a, b]) => a.x + ((y - a.y) * (b.x - a.x)) / (b.y - a.y))
      .sort((a, b) => a - b);
    for (let i = 0; i + 1 < crossings.length; i += 2) {
      const run = { y, x0: Math.ceil(crossings[i]), x1: Math.floor(crossings[i + 1]) };
      if (run.x0 <= run.x1) inside.push(run);
    }
  }
  return merged([...outline, ...inside]);
}

/** In order, and each pixel once. */
function merged(runs: Run[]): Run[] {
  const sorted = [...runs].sort((a, b) => a.y - b.y || a.x0 - b.x0);
  const result: Run[] = [];
  for (const run of sorted) {
    const last = result[result.length - 1];
    if (last && last.y === run.y && run.x0 <= last.x1 + 1) last.x1 = Math.max(last.x1, run.x1);
    else result.push({ ...run });
  }
  return result;
}

/** The smallest rectangle around the points of a region; that of a circle around all of it. */
export function boundsOf({ kind, points }: Pick<Region, "kind" | "points">): { x: number; y: number; width: number; height: number } {
  const all = kind === "circle" ? circleRuns(points).flatMap(({ y, x0, x1 }) => [{ x: x0, y }, { x: x1, y }]) : points;
  const xs = all.map((point) => point.x);
  const ys = all.map((point) => point.y);
  const [x, y] = [Math.min(...xs), Math.min(...ys)];
  return { x, y, width: Math.max(...xs) - x + 1, height: Math.max(...ys) - y + 1 };
}

/** Moved as a whole, and no further than its points stay in the frame. */
export function movedBy(region: Region, dx: number, dy: number, width: number, height: number): Region {
  const xs = region.points.map((point) => point.x);
  const ys = region.points.map((point) => point.y);
  const x = clamp(dx, -Math.min(...xs), width - 1 - Math.max(...xs));
  const y = clamp(dy, -Math.min(...ys), height - 1 - Math.max(...ys));
  return { ...region, points: region.points.map((point) => ({ x: point.x + x, y: point.y + y })) };
}

/** With one of its points elsewhere in the frame. */
export function withPoint(region: Region, index: number, to: Point, width: number, height: number): Region {
  const point = { x: clamp(to.x, 0, width - 1), y: clamp(to.y, 0, height - 1) };
  return { ...region, points: region.points.map((old, i) => (i === index ? point : old)) };
}

/** Whether a place is on a region, within `reach` pixels of it. */
export function isNear(region: Region, at: Point, reach: number): boolean {
  return unclippedRuns(region).some(
    ({ y, x0, x1 }) => Math.abs(y - at.y) <= reach && at.x >= x0 - reach && at.x <= x1 + reach,
  );
}

export function clamp(value: number, low: number, high: number): number {
  return Math.min(high, Math.max(low, value));
}
