/** Figures of all regions over all frames, made in the background while the page stays at hand. */

import type { Frames } from "../frames";
import type { Head } from "../head";
import type { Region } from "../regions";
import type { Store } from "../state";
import { figuresOf, ruleOf, type Figures } from "../statistics";

/** One region over the frames; `null` for the whole frame, undefined where it is not made yet. */
export interface RegionSeries {
  region: Region | null;
  figures: (Figures | undefined)[];
}

export class Series {
  private readonly made = new Map<string, (Figures | undefined)[]>();
  private turn = 0;
  private running: Promise<void> = Promise.resolve();

  constructor(
    private readonly head: Head,
    private readonly store: Store,
    private readonly frames: Frames,
    private readonly fail: (error: unknown) => void,
    /** Called as figures come. */
    private readonly progress: () => void,
  ) {
    store.on(["regions", "goodOnly"], () => this.restart());
  }

  /** The whole frame, then the regions in their order. */
  all(): RegionSeries[] {
    return [null, ...this.store.state.regions].map((region) => ({ region, figures: this.of(region) }));
  }

  /** After all figures are there. */
  async complete(): Promise<RegionSeries[]> {
    let waited;
    do {
      waited = this.running;
      await waited;
    } while (waited !== this.running);
    return this.all();
  }

  private of(region: Region | null): (Figures | undefined)[] {
    const key = JSON.stringify([this.store.state.goodOnly, region?.kind, region?.points]);
    const figures = this.made.get(key) ?? new Array<Figures | undefined>(this.head.frames.length).fill(undefined);
    this.made.set(key, figures);
    return figures;
  }

  private restart(): void {
    const turn = ++this.turn;
    const wanted = this.all();
    for (const [key, figures] of this.made) {
      if (!wanted.some((series) => series.figures === figures)) this.made.delete(key);
    }
    this.running = this.run(turn, wanted).catch(this.fail);
  }

  /** Ends early when the regions have changed. */
  private async run(turn: number, wanted: RegionSeries[]): Promise<void> {
    const rule = ruleOf(this.head, this.store.state.goodOnly);
    let told = performance.now();
    for (let index = 0; index < this.head.frames.length && turn === this.turn; ++index) {
      const missing = wanted.filter(({ figures }) => !figures[index]);
      if (missing.length === 0) continue;
      const frame = await this.frames.get(index);
      for (const { region, figures } of missing) figures[index] = figuresOf(frame, region, rule);
      if (performance.now() - told < 100) continue;
      told = performance.now();
      this.progress();
      await new Promise((go) => setTimeout(go));
    }
    if (turn === this.turn) this.progress();
  }
}
