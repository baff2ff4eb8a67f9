/// When each row is reached if the machine keeps to the programmed feed, and to nominal rates where
/// there is none. Accelerations are left out, so this is no cycle time.

import { Flag, type AxisData } from '../data/contract.ts';
import type { Rows } from '../data/rows.ts';

export interface NominalRates {
  readonly feed: number; // of the tool's end where the toolpath gives none [length/min]
  readonly linear: number; // of a linear axis [length/min]
  readonly rotary: number; // of a rotary axis [deg/min]
}

export function nominalRates(lengthUnit: string): NominalRates {
  return lengthUnit === 'in'
    ? { feed: 40, linear: 400, rotary: 7200 }
    : { feed: 1000, linear: 10_000, rotary: 7200 };
}

/// In seconds from the first row.
export function nominalTimes(rows: Rows, axes: readonly AxisData[], rates: NominalRates): Float64Array {
  const times = new Float64Array(rows.count);
  const [x, y, z] = rows.position;
  const rateOf = rows.axes.map((axis) => (axes[axis]!.type === 'linear' ? rates.linear : rates.rotary));
  for (let row = 1; row < rows.count; ++row) {
    let minutes = 0;
    for (let column = 0; column < rateOf.length; ++column) {
      const joint = rows.joints[column]!;
      minutes = Math.max(minutes, Math.abs(joint[row]! - joint[row - 1]!) / rateOf[column]!);
    }
    if ((rows.flags[row]! & Flag.rapid) === 0) {
      const way = Math.hypot(x[row]! - x[row - 1]!, y[row]! - y[row - 1]!, z[row]! - z[row - 1]!);
      minutes = Math.max(minutes, way / (rows.feed[row]! || rates.feed));
    }
    times[row] = times[row - 1]! + minutes * 60;
  }
  return times;
}
