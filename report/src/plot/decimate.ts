/// Long columns reduced to what a plot can show: of each pixel the first, lowest, highest and last.

import { lowerBound } from '../motion/search.ts';

/// For each pixel of [from, to] the rows whose x falls on it, as `pixels + 1` bounds; one row more on
/// either side belongs to the first and the last, so that lines go on to the edges.
export function pixelBounds(x: Float64Array, from: number, to: number, pixels: number): Uint32Array {
  const bounds = new Uint32Array(pixels + 1);
  for (let pixel = 0; pixel <= pixels; ++pixel) {
    bounds[pixel] = lowerBound(x, from + ((to - from) * pixel) / pixels);
  }
  bounds[0] = Math.max(0, bounds[0]! - 1);
  bounds[pixels] = Math.min(x.length, lowerBound(x, to) + 2);
  return bounds;
}

export interface Decimated {
  readonly x: number[];
  readonly y: number[];
}

export function decimate(x: Float64Array, y: Float64Array, bounds: Uint32Array): Decimated {
  const xs: number[] = [];
  const ys: number[] = [];
  for (let pixel = 0; pixel + 1 < bounds.length; ++pixel) {
    const begin = bounds[pixel]!;
    const end = bounds[pixel + 1]!;
    if (begin === end) {
      continue;
    }
    let lowest = begin;
    let highest = begin;
    for (let row = begin + 1; row < end; ++row) {
      if (y[row]! < y[lowest]!) {
        lowest = row;
      }
      if (y[row]! > y[highest]!) {
        highest = row;
      }
    }
    let previous = -1;
    for (const row of [begin, Math.min(lowest, highest), Math.max(lowest, highest), end - 1]) {
      if (row > previous) {
        xs.push(x[row]!);
        ys.push(y[row]!);
        previous = row;
      }
    }
  }
  return { x: xs, y: ys };
}

/// Pairs of x between which the flag is set, those that lie less than a pixel apart joined. A row's
/// flag counts for the way that leads to it.
export function flaggedSpans(
  x: Float64Array,
  flags: Uint8Array,
  flag: number,
  bounds: Uint32Array,
): number[] {
  const spans: number[] = [];
  const first = bounds[0]!;
  const end = bounds.at(-1)!;
  if (first === end) {
    return spans;
  }
  const pixel = (x[end - 1]! - x[first]!) / (bounds.length - 1);
  for (let row = first; row < end; ++row) {
    if ((flags[row]! & flag) === 0) {
      continue;
    }
    const begin = x[Math.max(0, row - 1)]!;
    if (spans.length > 0 && begin - spans.at(-1)! < pixel) {
      spans[spans.length - 1] = x[row]!;
    } else {
      spans.push(begin, x[row]!);
    }
  }
  return spans;
}
