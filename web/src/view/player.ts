/** Which frame is shown: steps, plays, and the slider. */

import type { Frames } from "../frames";
import { secondsOf, type Head } from "../head";
import { clamp } from "../regions";
import type { Store } from "../state";
import { byId, fillSelect } from "./dom";

const SPEEDS = [1, 2, 5, 10, 25, 50];

export class Player {
  private readonly position = byId<HTMLInputElement>("position");
  private readonly speed = byId<HTMLSelectElement>("speed");
  private readonly seconds: number[] | null;
  /** The frame that was asked for last. */
  private wanted = 0;

  constructor(
    private readonly head: Head,
    private readonly store: Store,
    private readonly frames: Frames,
    private readonly fail: (error: unknown) => void,
  ) {
    this.seconds = secondsOf(head.frames);
    this.position.max = String(frames.count - 1);
    this.position.addEventListener("input", () => this.goTo(Number(this.position.value)));
    fillSelect(this.speed, SPEEDS.map((speed) => [String(speed), String(speed)]));
    this.speed.value = "10";
    byId("back").addEventListener("click", () => this.step(-1));
    byId("forward").addEventListener("click", () => this.step(1));
    byId("play").addEventListener("click", () => this.toggle());
    byId("play").toggleAttribute("disabled", frames.count < 2);
    store.on(["index", "frame"], () => this.showMoment());
    store.on(["playing"], () => this.showPlaying());
  }

  goTo(index: number): void {
    this.show(clamp(index, 0, this.frames.count - 1)).catch(this.fail);
  }

  step(by: number): void {
    this.store.set({ playing: false });
    this.goTo(this.wanted + by);
  }

  toggle(): void {
    if (this.frames.count < 2) return;
    const playing = !this.store.state.playing;
    this.store.set({ playing });
    if (playing) this.play().catch(this.fail);
  }

  private async show(index: number): Promise<void> {
    this.wanted = index;
    const frame = await this.frames.get(index);
    if (this.wanted === index) this.store.set({ index, frame });
  }

  private async play(): Promise<void> {
    while (this.store.state.playing) {
      const due = performance.now() + 1000 / Number(this.speed.value);
      await this.show((this.wanted + 1) % this.frames.count);
      await new Promise((go) => setTimeout(go, Math.max(0, due - performance.now())));
    }
  }

  private showMoment(): void {
    const { index } = this.store.state;
    const facts = this.head.frames[index];
    const parts = [`frame ${facts.number}`, `${index + 1} of ${this.frames.count}`];
    if (this.seconds) parts.push(`${this.seconds[index].toFixed(3)} s`);
    byId("moment").textContent = parts.join(" · ");
    byId("clock").textContent = facts.time?.replace("T", " ").replace("Z", " UTC") ?? "";
    this.position.value = String(index);
    this.position.setAttribute("aria-valuetext", parts.join(", "));
  }

  private showPlaying(): void {
    const { playing } = this.store.state;
    const button = byId("play");
    button.textContent = playing ? "❚❚ Pause" : "▶ Play";
    button.setAttribute("aria-label", playing ? "Pause" : "Play");
    byId("reading").setAttribute("aria-live", playing ? "off" : "polite");
  }
}
