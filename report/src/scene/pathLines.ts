/// The toolpath as lines: what is drawn of it, by part, and how far it has come at a row.

import { Flag } from '../data/contract.ts';
import type { Rows } from '../data/rows.ts';
import { lastNotAbove } from '../motion/search.ts';

/// Rows [begin, end) that one tool runs on one part.
export interface Stretch {
  readonly begin: number;
  readonly end: number;
}

const MOST_POINTS = 300_000;

/// Of the rows of a stretch those that a drawing needs: none that lies within `tolerance` of the one
/// kept before, but where a rapid begins or ends.
function thinned(rows: Rows, stretch: Stretch, tolerance: number): number[] {
  const [x, y, z] = rows.position;
  const kept = [stretch.begin];
  let last = stretch.begin;
  for (let row = stretch.begin + 1; row < stretch.end; ++row) {
    const isEdge =
      row + 1 === stretch.end ||
      ((rows.flags[row]! ^ rows.flags[row + 1]!) & (Flag.rapid | Flag.failed)) !== 0;
    const dx = x[row]! - x[last]!;
    const dy = y[row]! - y[last]!;
    const dz = z[row]! - z[last]!;
    if (isEdge || dx * dx + dy * dy + dz * dz > tolerance * tolerance) {
      kept.push(row);
      last = row;
    }
  }
  return kept;
}

export function keptRows(rows: Rows, stretch: Stretch, size: number): number[] {
  let tolerance = size * 1e-5;
  let kept = thinned(rows, stretch, tolerance);
  while (kept.length > MOST_POINTS && tolerance < size * 1e-2) {
    tolerance *= 3;
    kept = thinned(rows, stretch, tolerance);
  }
  return kept;
}

/// Lines of one sort, as pairs of indices into the kept rows.
export interface Segments {
  readonly indices: Uint32Array;
  readonly rows: Uint32Array; // at which each ends, ascending
}

/// Of `segments`, how many lead to rows up to `row`.
export function countUpTo(segments: Segments, row: number): number {
  return lastNotAbove(segments.rows, row) + 1;
}

export interface PathLines {
  readonly kept: Uint32Array;
  readonly positions: Float32Array;
  readonly cuts: Segments;
  readonly rapids: Segments;
}

export function pathLines(rows: Rows, stretch: Stretch, size: number): PathLines {
  const kept = Uint32Array.from(keptRows(rows, stretch, size));
  const positions = new Float32Array(kept.length * 3);
  kept.forEach((row, index) => {
    rows.position.forEach((column, k) => (positions[3 * index + k] = column[row]!));
  });
  const isRapid = (index: number): boolean => (rows.flags[kept[index]!]! & Flag.rapid) !== 0;
  const segments = (wanted: boolean): Segments => {
    const indices: number[] = [];
    const ends: number[] = [];
    for (let index = 1; index < kept.length; ++index) {
      if (isRapid(index) === wanted) {
        indices.push(index - 1, index);
        ends.push(kept[index]!);
      }
    }
    return { indices: Uint32Array.from(indices), rows: Uint32Array.from(ends) };
  };
  return { kept, positions, cuts: segments(false), rapids: segments(true) };
}
