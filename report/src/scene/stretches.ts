/// Which tool runs which rows on which part.

import type { OperationData } from '../data/contract.ts';
import type { Rows } from '../data/rows.ts';
import type { Kinematics } from '../motion/kinematics.ts';
import { lastNotAbove } from '../motion/search.ts';
import { Flag } from '../data/contract.ts';
import type { PathExtent } from './layout.ts';
import type { PlacedStretch } from './MachineView.ts';

export class Stretches {
  readonly all: readonly PlacedStretch[];
  private readonly begins: readonly number[];
  private readonly operations: readonly OperationData[];

  /// Operations without a row are left out.
  constructor(operations: readonly OperationData[], rows: Rows, kinematics: Kinematics) {
    this.operations = operations.filter((operation, index) => {
      const end = operations[index + 1]?.firstRow ?? rows.count;
      return operation.firstRow < Math.min(end, rows.count);
    });
    const places = new Map(this.operations.map(({ stream }) => [stream, kinematics.workplace(stream)]));
    this.all = this.operations.map((operation, index) => ({
      begin: operation.firstRow,
      end: this.operations[index + 1]?.firstRow ?? rows.count,
      place: places.get(operation.stream)!,
      toolLength: operation.toolLength,
    }));
    this.begins = this.all.map((stretch) => stretch.begin);
  }

  at(row: number): PlacedStretch {
    return this.all[Math.max(lastNotAbove(this.begins, row), 0)]!;
  }

  operationAt(row: number): OperationData {
    return this.operations[Math.max(lastNotAbove(this.begins, row), 0)]!;
  }

  /// What the tools pass on each part.
  extents(rows: Rows): Map<string, PathExtent> {
    const extents = new Map<string, PathExtent>();
    const [x, y, z] = rows.position;
    for (const stretch of this.all) {
      const { name } = stretch.place.part;
      let { radius, low, high } = extents.get(name) ?? { radius: 0, low: Infinity, high: -Infinity };
      for (let row = stretch.begin; row < stretch.end; ++row) {
        if ((rows.flags[row]! & Flag.rapid) === 0) {
          radius = Math.max(radius, Math.hypot(x[row]!, y[row]!));
          low = Math.min(low, z[row]!);
          high = Math.max(high, z[row]!);
        }
      }
      if (low <= high) {
        extents.set(name, { radius, low, high });
      }
    }
    return extents;
  }
}
