import assert from 'node:assert/strict';
import { test } from 'node:test';
import { layoutMachine } from '../../src/scene/layout.ts';
import { countUpTo, pathLines } from '../../src/scene/pathLines.ts';
import { clock, exact, limitsText, short, small } from '../../src/base/format.ts';
import { dot } from '../../src/motion/transform.ts';
import { TRUNNION, axis } from '../support/machines.ts';
import { rowsAlongX } from '../support/rows.ts';

test('rapids and cuts are lines of their own, each up to the row that it leads to', () => {
  const rows = rowsAlongX([0, 10, 20, 30, 40], [1, 1, 0, 0, 1]);
  const lines = pathLines(rows, { begin: 0, end: 5 }, 100);
  assert.deepEqual([...lines.kept], [0, 1, 2, 3, 4]);
  assert.deepEqual([...lines.rapids.indices], [0, 1, 3, 4]);
  assert.deepEqual([...lines.cuts.indices], [1, 2, 2, 3]);
  assert.deepEqual(
    [0, 1, 2, 4].map((row) => countUpTo(lines.cuts, row)),
    [0, 0, 1, 2],
  );
  assert.deepEqual(
    [0, 1, 2, 4].map((row) => countUpTo(lines.rapids, row)),
    [0, 1, 1, 2],
  );
});

test('rows too near to be seen are left out, but not where a rapid ends', () => {
  // 0.0005 is less than the hundred thousandth part of 100.
  const rows = rowsAlongX([0, 0.0005, 0.001, 50, 50.0001, 90], [0, 0, 0, 1, 0, 0]);
  const { kept } = pathLines(rows, { begin: 0, end: 6 }, 100);
  assert.deepEqual([...kept], [0, 2, 3, 5]);
});

test('a stretch is drawn by itself', () => {
  const { kept } = pathLines(rowsAlongX([0, 1, 2, 3, 4], [0, 0, 0, 0, 0]), { begin: 2, end: 4 }, 100);
  assert.deepEqual([...kept], [2, 3]);
});

test('every axis has its mark, rings at right angles to their axis and over the limits', () => {
  const layout = layoutMachine(TRUNNION, new Map());
  assert.equal(layout.marks.length, 3);
  const tilt = layout.marks[1]!;
  assert.ok(Math.abs(dot(tilt.zero, [1, 0, 0])) < 1e-12);
  assert.deepEqual([tilt.low, tilt.high], [-100, 100]);
  assert.deepEqual([layout.marks[0]!.low, layout.marks[0]!.high], [-180, 180]);
  // On its axis: y 0 and z -100, wherever along x.
  assert.deepEqual(tilt.origin.slice(1), [0, -100]);
});

test('every body has something solid that moves with it, and all of it stands above the floor', () => {
  const layout = layoutMachine(TRUNNION, new Map());
  for (const body of [-1, 0, 1, 2]) {
    assert.ok(
      layout.solids.some((solid) => solid.parent === body),
      `body ${body}`,
    );
  }
  assert.ok(layout.solids.every((solid) => solid.origin[2] > layout.floor));
});

test('the table is as large as what the tool passes on it', () => {
  const extents = new Map([['table', { radius: 50, low: -12, high: 30 }]]);
  const layout = layoutMachine(TRUNNION, extents);
  const table = layout.solids.find((solid) => solid.parent === 0 && solid.side === 'part')!;
  assert.equal(table.shape, 'cylinder');
  assert.ok(table.size[0]! > 50 && table.size[0]! < 60);
  assert.ok(table.origin[2] + table.size[1]! / 2 < -80 - 12);
});

test('linear axes have arrows at the work, on a body that they do not turn', () => {
  const [compass, ...others] = layoutMachine(TRUNNION, new Map()).compasses;
  assert.deepEqual([compass!.body, compass!.axes, others], [2, [2], []]);
  // Behind a rotary axis they hang on the linear one that carries it.
  const head = { ...TRUNNION, axes: [...TRUNNION.axes, axis('B', 2, 'rotary', [0, 1, 0])] };
  const mounts = head.mounts.map((mount) => (mount.kind === 'tool' ? { ...mount, parent: 3 } : mount));
  assert.equal(layoutMachine({ ...head, mounts }, new Map()).compasses[0]!.body, 2);
});

test('axes that carry no mount are marked as well', () => {
  const machine = {
    ...TRUNNION,
    axes: [...TRUNNION.axes, axis('W', -1, 'linear', [0, 1, 0], [0, 0, 0], [null, 5])],
  };
  const layout = layoutMachine(machine, new Map());
  assert.equal(layout.marks[3]!.high, 5);
  assert.ok(layout.marks[3]!.low < 5);
});

test('numbers in words', () => {
  assert.equal(exact(-1.5, 3), '\u22121.500');
  assert.equal(short(-0.00001, 3), '0');
  assert.equal(short(1250, 3), '1250');
  assert.equal(small(2.0056e-10), '2.01e-10');
  assert.equal(small(0.0139394), '0.0139');
  assert.equal(small(0), '0');
  assert.equal(small(1e-9), '1e-9');
  assert.equal(small(-2.5e-4), '\u22122.5e-4');
  assert.equal(clock(59.9), '00:59');
  assert.equal(clock(3725), '1:02:05');
  assert.equal(limitsText([null, null]), 'unlimited');
  assert.equal(limitsText([-10, null]), '\u221210 to no end');
});
