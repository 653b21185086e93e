/** The frames of the page: unpacked when they are asked for, the last used ones kept. */

import type { Head } from "./head";
import { unpackFrame, type Frame } from "./packing";

const KEPT_BYTES = 200e6;

export class Frames {
  private readonly kept = new Map<number, Promise<Frame>>();
  private readonly most: number;

  /** `packed` gives the base64 text of a frame. */
  constructor(
    private readonly head: Head,
    private readonly packed: (index: number) => string,
  ) {
    this.most = Math.max(4, Math.floor(KEPT_BYTES / (5 * head.width * head.height)));
  }

  get count(): number {
    return this.head.frames.length;
  }

  get(index: number): Promise<Frame> {
    const frame = this.kept.get(index) ?? this.unpack(index);
    this.kept.delete(index);
    this.kept.set(index, frame);
    if (this.kept.size > this.most) this.kept.delete(this.kept.keys().next().value as number);
    return frame;
  }

  private unpack(index: number): Promise<Frame> {
    const { width, height, step } = this.head;
    return unpackFrame(this.packed(index), width, height, step);
  }
}
