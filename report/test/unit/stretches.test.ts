import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { MachineData, OperationData } from '../../src/data/contract.ts';
import { Kinematics } from '../../src/motion/kinematics.ts';
import { Stretches } from '../../src/scene/stretches.ts';
import { TRUNNION } from '../support/machines.ts';
import { rowsAlongX } from '../support/rows.ts';

const TWO_PARTS: MachineData = {
  ...TRUNNION,
  mounts: [
    ...TRUNNION.mounts,
    { name: 'bed', kind: 'part', parent: -1, origin: [0, 0, -200], zAxis: [0, 0, 1], xAxis: [1, 0, 0] },
  ],
  streams: [...TRUNNION.streams, { id: 2, tool: 'spindle', part: 'bed' }],
};

function operation(name: string, firstRow: number, stream: number, toolLength: number): OperationData {
  return { name, line: 1, firstRow, stream, toolNumber: null, toolLength };
}

// The second operation has no row.
const OPERATIONS = [operation('A', 0, 1, 10), operation('B', 2, 2, 20), operation('C', 2, 2, 30), operation('D', 4, 1, 40)];
const ROWS = rowsAlongX([1, 2, 30, 40, 5, 600], [0, 0, 0, 0, 0, 1]);

test('rows belong to the last operation that begins before them', () => {
  const stretches = new Stretches(OPERATIONS, ROWS, new Kinematics(TWO_PARTS));
  assert.deepEqual(
    stretches.all.map(({ begin, end, place, toolLength }) => [begin, end, place.part.name, toolLength]),
    [
      [0, 2, 'table', 10],
      [2, 4, 'bed', 30],
      [4, 6, 'table', 40],
    ],
  );
  assert.deepEqual([0, 1, 2, 3, 4, 5].map((row) => stretches.operationAt(row).name), ['A', 'A', 'C', 'C', 'D', 'D']);
  assert.equal(stretches.at(3).place.part.name, 'bed');
});

test('what is passed on each part, rapids apart', () => {
  const extents = new Stretches(OPERATIONS, ROWS, new Kinematics(TWO_PARTS)).extents(ROWS);
  assert.equal(extents.get('table')!.radius, 5);
  assert.deepEqual(extents.get('bed'), { radius: 40, low: 0, high: 0 });
});
