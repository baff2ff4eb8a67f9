import type { Rows } from '../../src/data/rows.ts';

/// Rows of a tool that moves along x, of a machine without axes.
export function rowsAlongX(x: readonly number[], flags: readonly number[]): Rows {
  const zeros = new Float64Array(x.length);
  return {
    count: x.length,
    axes: [],
    joints: [],
    position: [Float64Array.from(x), zeros, zeros],
    direction: [zeros, zeros, zeros],
    point: zeros,
    line: zeros,
    flags: Uint8Array.from(flags),
    branch: zeros,
    positionError: zeros,
    directionError: zeros,
    feed: zeros,
    decimals: {},
  };
}
