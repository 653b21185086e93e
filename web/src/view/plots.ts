/** Plots: figures over time, the profile of a line, a histogram. */

import uPlot from "uplot";
import { secondsOf, type Head } from "../head";
import { linePixels, type Region } from "../regions";
import type { Store } from "../state";
import { histogramOf, profileOf, ruleOf, sortedValues, type CountingRule } from "../statistics";
import { Shown } from "../units";
import { byId, fillSelect, make, onThemeChange, swatch, themeColour } from "./dom";
import { regionColour } from "./picture";
import type { Series } from "./series";

const KINDS = { time: "Over time", profile: "Profile", histogram: "Histogram" } as const;
type PlotKind = keyof typeof KINDS;

const FIGURES = { mean: "mean", maximum: "max", minimum: "min" } as const;
type FigureKind = keyof typeof FIGURES;

const BINS = 128;
const HEIGHT = 240;

interface Curve {
  label: string;
  colour: string;
  values: (number | null)[];
}

/** What is to be drawn; null when there is nothing. */
interface Content {
  xLabel: string;
  yLabel: string;
  x: number[];
  curves: Curve[];
  /** A place on the x axis to be marked. */
  mark?: number;
  steps?: boolean;
}

export class Plots {
  private readonly place = byId("plot");
  private readonly names = byId("plot-names");
  private readonly note = byId("plot-note");
  private readonly figure = byId<HTMLSelectElement>("figure");
  private readonly seconds: number[] | null;
  private kind: PlotKind = "time";
  private plot: uPlot | null = null;
  /** Set by the maker of the page, since the series report to the plots. */
  series: Series | null = null;

  constructor(
    private readonly head: Head,
    private readonly store: Store,
    private readonly goTo: (index: number) => void,
  ) {
    this.seconds = secondsOf(head.frames);
    if (head.frames.length < 2) this.kind = "histogram";
    fillSelect(this.figure, Object.entries(FIGURES));
    this.figure.addEventListener("change", () => this.show());
    this.addKinds();
    new ResizeObserver(() => this.plot?.setSize({ width: this.place.clientWidth, height: HEIGHT })).observe(this.place);
    onThemeChange(() => this.show());
    store.on(["frame", "regions", "selected", "scale", "goodOnly"], () => this.show());
  }

  private addKinds(): void {
    const buttons = (Object.keys(KINDS) as PlotKind[]).map((kind) => {
      const button = make("button", { type: "button", "aria-pressed": String(kind === this.kind) }, KINDS[kind]);
      button.addEventListener("click", () => {
        this.kind = kind;
        buttons.forEach((other) => other.setAttribute("aria-pressed", String(other === button)));
        this.show();
      });
      return button;
    });
    byId("plot-kinds").replaceChildren(...buttons);
  }

  show(): void {
    byId("figure-field").hidden = this.kind !== "time";
    const content = this[this.kind]();
    this.plot?.destroy();
    this.plot = null;
    this.note.textContent = "";
    if (content) this.draw(content);
    else this.note.textContent = this.kind === "profile" ? "Draw or select a line to see its profile." : "Nothing to plot.";
    this.names.replaceChildren(...(content?.curves ?? []).map(({ label, colour }) => make("li", {}, swatch(colour), label)));
    const names = content?.curves.map(({ label }) => label).join(", ") ?? "nothing yet";
    this.place.setAttribute("aria-label", `${KINDS[this.kind]}: ${names}`);
  }

  private get shown(): Shown {
    return new Shown(this.head, this.store.state.scale);
  }
  private get rule(): CountingRule {
    return ruleOf(this.head, this.store.state.goodOnly);
  }
  private quantityLabel(): string {
    return `${this.head.quantity} (${this.shown.symbol})`;
  }

  private time(): Content | null {
    if (!this.series) return null;
    const { shown } = this;
    const kind = this.figure.value as FigureKind;
    const x = this.seconds ?? this.head.frames.map(({ number }) => number);
    const curves = this.series.all().map(({ region, figures }) => ({
      ...nameOf(region),
      values: figures.map((one) => (one && one.counted > 0 ? shown.value(one[kind]) : null)),
    }));
    const xLabel = this.seconds ? "Time after the first frame (s)" : "Frame";
    return { xLabel, yLabel: `${FIGURES[kind]} ${this.quantityLabel()}`, x, curves, mark: x[this.store.state.index] };
  }

  private profile(): Content | null {
    const { regions, frame } = this.store.state;
    const selected = this.store.selectedRegion();
    const lines = selected?.kind === "line" ? [selected] : regions.filter((region) => region.kind === "line");
    if (lines.length === 0) return null;
    const { shown } = this;
    const longest = Math.max(...lines.map((line) => linePixels(line.points).length));
    const curves = lines.map((line) => ({
      ...nameOf(line),
      values: profileOf(frame, line.points, this.rule).map((value) => (Number.isNaN(value) ? null : shown.value(value))),
    }));
    for (const { values } of curves) while (values.length < longest) values.push(null);
    const x = Array.from({ length: longest }, (_, i) => i * this.head.bin);
    return { xLabel: "Pixels along the line", yLabel: this.quantityLabel(), x, curves };
  }

  private histogram(): Content | null {
    const { frame } = this.store.state;
    const region = this.store.selectedRegion();
    const sorted = sortedValues(frame, region, this.rule);
    const { shown } = this;
    const { edges, counts } = histogramOf(sorted, BINS);
    if (edges.length === 0) return null;
    const curve = { ...nameOf(region), values: counts };
    return { xLabel: this.quantityLabel(), yLabel: "Pixels", x: edges.map((edge) => shown.value(edge)), curves: [curve], steps: true };
  }

  private draw({ xLabel, yLabel, x, curves, mark, steps }: Content): void {
    const [ink, grid] = [themeColour("ink"), themeColour("grid")];
    const axis = (label: string): uPlot.Axis => ({
      label,
      stroke: ink,
      grid: { stroke: grid, width: 1 },
      ticks: { stroke: grid, width: 1 },
      font: '12px system-ui, "DejaVu Sans", sans-serif',
      labelFont: '12px system-ui, "DejaVu Sans", sans-serif',
      labelSize: 20,
    });
    const path = steps && uPlot.paths.stepped ? uPlot.paths.stepped({ align: 1 }) : null;
    const options: uPlot.Options = {
      width: Math.max(200, this.place.clientWidth),
      height: HEIGHT,
      legend: { show: false },
      cursor: { drag: { x: false, y: false }, y: false },
      scales: { x: { time: false } },
      axes: [axis(xLabel), { ...axis(yLabel), size: 64 }],
      series: [
        {},
        ...curves.map(({ label, colour }): uPlot.Series => ({
          label,
          stroke: colour,
          width: 1.75,
          points: { show: x.length === 1 },
          ...(path ? { paths: path, fill: `${colour}40` } : {}),
        })),
      ],
      hooks: {
        draw: [(plot) => mark !== undefined && drawMark(plot, mark, ink)],
        setCursor: [(plot) => this.read(plot, xLabel, curves)],
      },
    };
    this.plot = new uPlot(options, [x, ...curves.map(({ values }) => values)], this.place);
    if (this.kind === "time") {
      this.plot.over.addEventListener("click", () => this.plot?.cursor.idx != null && this.goTo(this.plot.cursor.idx));
    }
  }

  private read(plot: uPlot, xLabel: string, curves: readonly Curve[]): void {
    const index = plot.cursor.idx;
    if (index == null) return;
    const digits = (value: number) => String(Number(value.toPrecision(6)));
    const values = curves.map(({ label, values }) => `${label} ${values[index] == null ? "–" : digits(values[index] as number)}`);
    this.note.textContent = `${xLabel} ${digits(plot.data[0][index])}: ${values.join(", ")}`;
  }
}

function nameOf(region: Region | null): { label: string; colour: string } {
  return region ? { label: region.name, colour: regionColour(region.id) } : { label: "whole frame", colour: "#8b95a5" };
}

function drawMark(plot: uPlot, at: number, colour: string): void {
  const { ctx, bbox } = plot;
  const x = Math.round(plot.valToPos(at, "x", true)) + 0.5;
  ctx.save();
  ctx.strokeStyle = colour;
  ctx.setLineDash([4, 4]);
  ctx.beginPath();
  ctx.moveTo(x, bbox.top);
  ctx.lineTo(x, bbox.top + bbox.height);
  ctx.stroke();
  ctx.restore();
}
