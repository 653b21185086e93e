/** Files of what is seen. */

import { frameCsv, RegionCsv } from "../csv";
import type { Head } from "../head";
import type { Store } from "../state";
import { Shown } from "../units";
import type { ColourBar } from "./colour_bar";
import { byId, save } from "./dom";
import type { Picture } from "./picture";
import type { Series } from "./series";

const BAR_WIDTH = 96;
const GAP = 12;
const LINE = 20;

export class Saving {
  constructor(
    private readonly head: Head,
    private readonly store: Store,
    private readonly picture: Picture,
    private readonly bar: ColourBar,
    private readonly series: Series,
    fail: (error: unknown) => void,
  ) {
    byId("save-picture").addEventListener("click", () => this.savePicture());
    byId("save-regions").addEventListener("click", () => this.saveRegions().catch(fail));
    byId("save-pixels").addEventListener("click", () => this.savePixels());
  }

  private name(what: string): string {
    const stem = this.head.title.replace(/\.[^.]*$/, "").replace(/[^\p{L}\p{N}._-]+/gu, "_") || "frames";
    return `${stem}-${what}`;
  }

  private frameNumber(): number {
    return this.head.frames[this.store.state.index].number;
  }

  private async saveRegions(): Promise<void> {
    const csv = new RegionCsv(this.head, new Shown(this.head, this.store.state.scale));
    const all = await this.series.complete();
    for (let index = 0; index < this.head.frames.length; ++index) {
      for (const { region, figures } of all) {
        const one = figures[index];
        if (one) csv.add(index, region, one);
      }
    }
    save(this.name("figures.csv"), new Blob([csv.text()], { type: "text/csv" }));
  }

  private savePixels(): void {
    const { frame, index, scale } = this.store.state;
    const text = frameCsv(this.head, frame, index, new Shown(this.head, scale), this.picture.visible());
    save(this.name(`frame-${this.frameNumber()}.csv`), new Blob([text], { type: "text/csv" }));
  }

  /** The view, its bar, and a line that says what it is. */
  private savePicture(): void {
    const { clientWidth: width, clientHeight: height } = this.picture.canvas;
    const canvas = document.createElement("canvas");
    canvas.width = width + BAR_WIDTH + 3 * GAP;
    canvas.height = height + 3 * GAP + LINE;
    const context = canvas.getContext("2d") as CanvasRenderingContext2D;
    context.fillStyle = "#ffffff";
    context.fillRect(0, 0, canvas.width, canvas.height);
    const part = (wide: number, draw: (context: CanvasRenderingContext2D) => void) => {
      const own = document.createElement("canvas");
      [own.width, own.height] = [wide, height];
      draw(own.getContext("2d") as CanvasRenderingContext2D);
      return own;
    };
    const size = { width, height };
    context.drawImage(part(width, (own) => this.picture.drawOn(own, size)), GAP, GAP);
    const bar = part(BAR_WIDTH, (own) => this.bar.drawOn(own, { width: BAR_WIDTH, height }, "#16191f"));
    context.drawImage(bar, width + 2 * GAP, GAP);
    context.fillStyle = "#16191f";
    context.font = '13px system-ui, "DejaVu Sans", sans-serif';
    const { time } = this.head.frames[this.store.state.index];
    const caption = [this.head.title, `frame ${this.frameNumber()}`, ...(time ? [time] : [])].join(" · ");
    context.fillText(caption, GAP, height + 2 * GAP + LINE / 2, canvas.width - 2 * GAP);
    canvas.toBlob((blob) => blob && save(this.name(`frame-${this.frameNumber()}.png`), blob), "image/png");
  }
}
