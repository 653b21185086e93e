/**
 * Frames as the page holds them: base64 of a zlib stream of
 *
 *     planes, gaps      one byte each: how many byte planes there are (1 to 4), and whether a plane of gaps follows
 *     byte planes       of the left differences, zigzag, the highest byte first; width times height bytes each
 *     gaps              1 where a pixel is no number
 *     status            of each pixel
 *
 * A difference is to the left neighbour; in the first column to the pixel above, at the very first to 0. A value is its
 * whole number times the step. Each frame stands alone.
 */

export interface Frame {
  width: number;
  height: number;
  /** In the packed unit; NaN where there is no number. */
  values: Float32Array;
  status: Uint8Array;
}

export async function unpackFrame(base64: string, width: number, height: number, step: number): Promise<Frame> {
  const planes = await inflate(bytesOf(base64));
  return frameOf(planes, width, height, step);
}

function bytesOf(base64: string): Uint8Array<ArrayBuffer> {
  const text = atob(base64.trim());
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
  return bytes;
}

async function inflate(bytes: Uint8Array<ArrayBuffer>): Promise<Uint8Array> {
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("deflate"));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

/** Throws an `Error` when the bytes are not those of a frame of this size. */
export function frameOf(bytes: Uint8Array, width: number, height: number, step: number): Frame {
  const size = width * height;
  const [planes, gaps] = bytes;
  if (!(planes >= 1 && planes <= 4) || gaps > 1 || bytes.length !== 2 + size * (planes + gaps + 1)) {
    throw new Error(`${bytes.length} bytes are no frame of ${width} x ${height} pixels`);
  }
  const plane = (n: number) => bytes.subarray(2 + n * size, 2 + (n + 1) * size);
  const codes = sum(merge(bytes.subarray(2), planes, size), width);
  const values = new Float32Array(size);
  for (let i = 0; i < size; ++i) values[i] = codes[i] * step;
  if (gaps) plane(planes).forEach((gap, i) => gap && (values[i] = NaN));
  return { width, height, values, status: plane(planes + gaps).slice() };
}

/** Byte planes to whole numbers. */
function merge(bytes: Uint8Array, planes: number, size: number): Int32Array {
  const words = new Int32Array(size);
  for (let plane = 0; plane < planes; ++plane) {
    const from = plane * size;
    for (let i = 0; i < size; ++i) words[i] = (words[i] << 8) | bytes[from + i];
  }
  return words;
}

/** Zigzag differences to what they are differences of, in place. */
function sum(words: Int32Array, width: number): Int32Array {
  let above = 0;
  for (let row = 0; row < words.length; row += width) {
    let left = above;
    for (let i = row; i < row + width; ++i) {
      const word = words[i];
      left = (left + ((word >>> 1) ^ -(word & 1))) | 0;
      words[i] = left;
    }
    above = words[row];
  }
  return words;
}
