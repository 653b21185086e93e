/** The page: reads what stands in it, shows the first frame, puts the controls to work. */

import { Frames } from "./frames";
import { parseHead, type Head } from "./head";
import { edgeOf, type Region } from "./regions";
import { Store, type Tool } from "./state";
import { SCALES, type Scale } from "./units";
import { ColourBar } from "./view/colour_bar";
import { byId, fillSelect, makeButton } from "./view/dom";
import { Drawing } from "./view/drawing";
import { showHead, Words } from "./view/facts";
import { KeyControl } from "./view/keys";
import { Picture } from "./view/picture";
import { Player } from "./view/player";
import { Plots } from "./view/plots";
import { PointerControl } from "./view/pointer";
import { RegionTable } from "./view/region_table";
import { Saving } from "./view/saving";
import { Series } from "./view/series";

const TOOLS: readonly (readonly [Tool, text: string, key: string])[] = [
  ["look", "Look", "Escape"],
  ["spot", "Spot", "s"],
  ["line", "Line", "l"],
  ["rectangle", "Rectangle", "r"],
  ["circle", "Circle", "c"],
  ["polygon", "Polygon", "p"],
];

function fail(error: unknown): void {
  const message = byId("message");
  message.textContent = `This page cannot go on: ${error instanceof Error ? error.message : String(error)}`;
  message.hidden = false;
}

/** Those of the tool's command line, in pixels of the page. */
function givenRegions(head: Head): Region[] {
  return head.regions.map(({ name, kind, points, radius }, id) => {
    const pixels = points.map(([x, y]) => ({ x: Math.floor(x / head.bin), y: Math.floor(y / head.bin) }));
    if (radius !== undefined) pixels.push(edgeOf(pixels[0], radius / head.bin, head.width, head.height));
    return { id, name, kind, points: pixels };
  });
}

function addTools(store: Store, drawing: Drawing): void {
  const buttons = TOOLS.map(([tool, text, key]) =>
    makeButton(text, { title: `${text} (${key})` }, () => {
      drawing.giveUp();
      store.set({ tool });
    }),
  );
  byId("tools").replaceChildren(...buttons);
  store.on(["tool"], () =>
    buttons.forEach((button, i) => button.setAttribute("aria-pressed", String(TOOLS[i][0] === store.state.tool))),
  );
}

function addDisplay(head: Head, store: Store): void {
  const palette = byId<HTMLSelectElement>("palette");
  fillSelect(palette, head.palettes.map(({ name }) => [name, name.replace("-", " ")]));
  palette.addEventListener("change", () => store.set({ palette: palette.value }));
  const scale = byId<HTMLSelectElement>("scale");
  if (head.scale === null) {
    fillSelect(scale, [["", head.unit]]);
    return;
  }
  fillSelect(scale, Object.entries(SCALES).map(([key, { symbol }]) => [key, symbol]));
  scale.value = head.scale;
  scale.addEventListener("change", () => store.set({ scale: scale.value as Scale }));
}

async function start(): Promise<void> {
  if (typeof DecompressionStream === "undefined") throw new Error("this browser does not know DecompressionStream; a newer one does");
  const head = parseHead(byId("ovix-head").textContent ?? "");
  const packed = document.querySelectorAll(".ovix-frame");
  if (packed.length !== head.frames.length) throw new Error(`${packed.length} of ${head.frames.length} frames are here`);
  const frames = new Frames(head, (index) => packed[index].textContent ?? "");
  const [low, high] = head.range ?? [0, 1];
  const store = new Store({
    index: 0,
    frame: await frames.get(0),
    playing: false,
    palette: head.palettes[0].name,
    scale: head.scale,
    low,
    high: Math.max(high, low + head.step),
    leaveOut: 0.5,
    follow: false,
    markBeyond: false,
    goodOnly: true,
    tool: "look",
    regions: givenRegions(head),
    selected: null,
    draft: [],
    cursor: null,
    centre: { x: (head.width - 1) / 2, y: (head.height - 1) / 2 },
    zoom: 1,
  });
  showHead(head);
  byId("main").hidden = false;

  const drawing = new Drawing(head, store);
  const picture = new Picture(head, store);
  const bar = new ColourBar(head, store);
  const player = new Player(head, store, frames, fail);
  const pointer = new PointerControl(head, store, picture, drawing);
  const focusPicture = () => picture.canvas.focus();
  addTools(store, drawing);
  addDisplay(head, store);
  byId("zoom-in").addEventListener("click", () => pointer.zoomBy(1.5));
  byId("zoom-out").addEventListener("click", () => pointer.zoomBy(1 / 1.5));
  byId("zoom-fit").addEventListener("click", () => pointer.fit());
  new KeyControl(head, store, drawing, picture.canvas, pointer, player);
  new Words(head, store, picture);
  new RegionTable(head, store, focusPicture);
  const plots = new Plots(head, store, (index) => player.goTo(index));
  const series = new Series(head, store, frames, fail, () => plots.show());
  plots.series = series;
  new Saving(head, store, picture, bar, series, fail);
  document.documentElement.dataset.ready = "true";
}

start().catch(fail);
