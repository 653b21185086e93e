/** The regions of the frame shown: their figures, names, and what can be done with them. */

import type { Head } from "../head";
import type { Region } from "../regions";
import type { Store } from "../state";
import { figuresOf, ruleOf, type Figures } from "../statistics";
import { Shown } from "../units";
import { byId, fillSelect, make, makeButton, swatch } from "./dom";
import { regionColour } from "./picture";

export class RegionTable {
  private readonly table = byId<HTMLTableElement>("regions");
  private readonly note = byId("regions-note");
  /** Rows stay while their regions do, so that a field keeps its focus. */
  private readonly rows = new Map<number, HTMLTableRowElement>();

  constructor(
    private readonly head: Head,
    private readonly store: Store,
    private readonly focusPicture: () => void,
  ) {
    const which = byId<HTMLSelectElement>("figures-of");
    fillSelect(which, [["good", "good pixels"], ["counted", "all that ovix stats counts"]]);
    which.addEventListener("change", () => store.set({ goodOnly: which.value === "good" }));
    store.on(["regions", "selected", "frame", "scale", "goodOnly"], () => this.show());
  }

  private show(): void {
    const { regions, frame, scale, selected, goodOnly } = this.store.state;
    const shown = new Shown(this.head, scale);
    const rule = ruleOf(this.head, goodOnly);
    const titles = [`mean (${shown.symbol})`, "min", "max", `std (${shown.difference})`, "counted", "good"];
    const header = make("tr", {}, ...["region", ...titles].map((text) => make("th", { scope: "col" }, text)));
    for (const id of this.rows.keys()) if (!regions.some((region) => region.id === id)) this.rows.delete(id);

    const whole = make("tr", {}, make("td", {}, "whole frame"), ...cells(figuresOf(frame, null, rule), shown));
    const rows = regions.map((region) => {
      const row = this.rowOf(region);
      row.classList.toggle("selected", region.id === selected);
      row.querySelector("[aria-pressed]")?.setAttribute("aria-pressed", String(region.id === selected));
      const figures = cells(figuresOf(frame, region, rule), shown);
      [...row.cells].slice(1).forEach((cell) => cell.remove());
      row.cells[0].after(...figures);
      return row;
    });
    this.place([header, whole, ...rows]);
    this.note.textContent = regions.length === 0 ? "Choose a shape above the picture and draw." : "";
  }

  /** Moves rows only where they are not in place: a moved field would lose its focus. */
  private place(rows: HTMLTableRowElement[]): void {
    const body = this.table.tBodies[0] ?? this.table.createTBody();
    rows.forEach((row, i) => {
      if (i < 2 && body.rows[i]) body.rows[i].replaceWith(row);
      else if (body.rows[i] !== row) body.insertBefore(row, body.rows[i] ?? null);
    });
    while (body.rows.length > rows.length) body.rows[body.rows.length - 1].remove();
  }

  private rowOf(region: Region): HTMLTableRowElement {
    const known = this.rows.get(region.id);
    if (known) return known;
    const { store } = this;
    const name = make("input", { type: "text", "aria-label": "Name of the region" });
    name.value = region.name;
    name.addEventListener("input", () => {
      const now = store.state.regions.find(({ id }) => id === region.id);
      if (now) store.replaceRegion({ ...now, name: name.value });
    });
    const select = makeButton("", { class: "select", "aria-pressed": "false", "aria-label": "Select the region", title: "Select" }, () => {
      store.set({ selected: region.id, tool: "look" });
      this.focusPicture();
    });
    select.append(swatch(regionColour(region.id)));
    const remove = makeButton("✕", { "aria-label": "Delete the region", title: "Delete" }, () => {
      store.removeRegion(region.id);
      this.focusPicture();
    });
    const row = make("tr", {}, make("td", {}, make("span", { class: "region-name" }, select, name, remove)));
    this.rows.set(region.id, row);
    return row;
  }
}

function cells(figures: Figures, shown: Shown): HTMLTableCellElement[] {
  const texts = [
    shown.text(figures.mean, 1),
    shown.text(figures.minimum),
    shown.text(figures.maximum),
    shown.spanText(figures.deviation, 1),
    String(figures.counted),
    String(figures.good),
  ];
  return texts.map((text) => make("td", {}, text));
}
