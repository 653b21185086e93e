/** The facts behind the frames, and the words beside the picture. */

import { statusText, type FactSection, type Head } from "../head";
import type { Kind } from "../palette";
import type { Store } from "../state";
import { Shown } from "../units";
import { byId, make, swatch } from "./dom";
import type { Picture } from "./picture";

export function showHead(head: Head): void {
  document.title = head.title;
  byId("title").textContent = head.title;
  byId("subtitle").textContent = head.subtitle;
  byId("footer").textContent = `Written by ${head.generator}. This file asks nothing of any network.`;
  byId("facts").replaceChildren(...head.facts.map(sectionOf));
}

function sectionOf({ title, columns, rows }: FactSection): HTMLElement {
  const table = make("table");
  if (columns.length > 0) {
    table.createTHead().append(make("tr", {}, ...columns.map((text) => make("th", { scope: "col" }, text))));
  }
  const body = table.createTBody();
  for (const [name, ...rest] of rows) {
    body.append(make("tr", {}, make("th", { scope: "row" }, name), ...rest.map((text) => make("td", {}, text))));
  }
  const scroll = make("div", { class: "scroll", tabindex: "0", role: "group", "aria-label": title }, table);
  return make("div", {}, make("h2", {}, title), scroll);
}

const KIND_TEXTS: Readonly<Record<Exclude<Kind, "shown">, string>> = {
  uncalibrated: "outside the calibrated range",
  below: "below the bar",
  above: "above the bar",
  under: "under what can be measured",
  over: "over what can be measured",
  noData: "no data",
};

/** The legend of the picture and the reading of the pixel under the cursor. */
export class Words {
  constructor(
    private readonly head: Head,
    private readonly store: Store,
    private readonly picture: Picture,
  ) {
    store.on(["frame", "low", "high", "markBeyond"], () => this.showLegend());
    store.on(["cursor", "frame", "scale"], () => this.showReading());
  }

  private showLegend(): void {
    const { counts } = this.picture;
    const pixels = this.head.width * this.head.height;
    const items = (Object.keys(KIND_TEXTS) as (keyof typeof KIND_TEXTS)[]).filter((kind) => this.isMarked(kind)).map((kind) => {
      const share = ((100 * counts[kind]) / pixels).toFixed(counts[kind] > 0 && counts[kind] < pixels / 1000 ? 3 : 1);
      const sample = kind === "uncalibrated" ? make("span", { class: "swatch hatched", "aria-hidden": "true" }) : swatch(`#${this.head.colours[kind]}`);
      return make("li", {}, sample, `${KIND_TEXTS[kind]} ${share} %`);
    });
    byId("legend").replaceChildren(...items);
  }

  private isMarked(kind: Kind): boolean {
    if (kind === "uncalibrated") return this.picture.counts.uncalibrated > 0;
    return this.store.state.markBeyond || (kind !== "below" && kind !== "above");
  }

  private showReading(): void {
    const { cursor, frame, scale } = this.store.state;
    const reading = byId("reading");
    if (!cursor) {
      reading.textContent = "Point at a pixel to read it.";
      return;
    }
    const i = cursor.y * frame.width + cursor.x;
    const shown = new Shown(this.head, scale);
    const value = Number.isNaN(frame.values[i]) ? "no number" : shown.textWithUnit(frame.values[i]);
    reading.textContent = `x ${this.place(cursor.x)}, y ${this.place(cursor.y)}: ${value} · ${statusText(this.head, frame.status[i])}`;
  }

  /** In pixels of the source. */
  private place(at: number): string {
    const { bin } = this.head;
    return bin === 1 ? String(at) : `${at * bin}–${at * bin + bin - 1}`;
  }
}
