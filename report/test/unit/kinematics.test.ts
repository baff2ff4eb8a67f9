import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { MachineData } from '../../src/data/contract.ts';
import { Kinematics, motionOf } from '../../src/motion/kinematics.ts';
import {
  apply,
  compose,
  frame,
  inverse,
  normalTo,
  rotate,
  rotationAbout,
  dot,
} from '../../src/motion/transform.ts';
import { TRUNNION, axis } from '../support/machines.ts';

function near(actual: readonly number[], expected: readonly number[], tolerance = 1e-12): void {
  assert.equal(actual.length, expected.length);
  actual.forEach((value, k) =>
    assert.ok(
      Math.abs(value - expected[k]!) <= tolerance,
      `${actual.join(', ')} is not ${expected.join(', ')}`,
    ),
  );
}

test('a turn about a line that does not pass the origin', () => {
  // A quarter turn about the line x = 10 along z takes (11, 0) to (10, 1).
  const turn = rotationAbout([10, 0, 5], [0, 0, 1], 90);
  near(apply(turn, [11, 0, 7]), [10, 1, 7]);
});

test('a turn about an oblique axis exchanges the coordinates', () => {
  // A third of a turn about (1, 1, 1) takes x to y, y to z and z to x.
  const s = 1 / Math.sqrt(3);
  near(apply(rotationAbout([0, 0, 0], [s, s, s], 120), [1, 2, 3]), [3, 1, 2]);
});

test('many whole turns change nothing, exactly', () => {
  const once = rotationAbout([1, 2, 3], [0, 0, 1], 30);
  assert.deepEqual(rotationAbout([1, 2, 3], [0, 0, 1], 30 + 360 * 1e7), once);
});

test('a frame, its inverse, and both together', () => {
  const t = frame([1, 2, 3], [0, 1, 0], [1, 0, 0]); // its y axis is z cross x = (0, 0, 1)
  near(rotate(t, [0, 1, 0]), [0, 0, 1]);
  near(apply(t, [1, 1, 1]), [2, 3, 4]);
  near(apply(inverse(t), [2, 3, 4]), [1, 1, 1]);
  near(apply(compose(t, inverse(t)), [7, 8, 9]), [7, 8, 9]);
});

test('a normal is at right angles even where the preferred direction gives none', () => {
  for (const preferred of [
    [0, 0, 2],
    [1, 0, 3],
  ] as const) {
    const normal = normalTo([0, 0, 1], preferred);
    near([dot(normal, [0, 0, 1]), dot(normal, normal)], [0, 1]);
  }
});

test('a linear axis moves along its direction', () => {
  near(apply(motionOf(axis('X', -1, 'linear', [-1, 0, 0]), 5), [1, 1, 1]), [-4, 1, 1]);
});

test('at zero the tool stands where the mounts say', () => {
  const kinematics = new Kinematics(TRUNNION);
  const pose = kinematics.toolPose(kinematics.workplace(1), 30, [0, 0, 0]);
  // The end is 30 below the spindle, the part 80 below it.
  near(pose.position, [0, 0, 50]);
  near(pose.direction, [0, 0, 1]);
});

test('the part tilts and turns, whatever the order of the axes in the file', () => {
  const kinematics = new Kinematics(TRUNNION);
  // The tool's end stands 100 above the A axis, Z = 30 less 30 of tool length. A = 90 takes the part's z
  // axis to -y and its y axis to z: the end is at y 100, and z = 0 - 20, as the part begins 20 above A.
  const tilted = kinematics.toolPose(kinematics.workplace(1), 30, [0, 90, 30]);
  near(tilted.position, [0, 100, -20]);
  near(tilted.direction, [0, 1, 0]);
  // C = 90 turns the part's x axis to where its y axis was: what was at y is at x.
  const turned = kinematics.toolPose(kinematics.workplace(1), 30, [90, 90, 30]);
  near(turned.position, [100, 0, -20]);
  near(turned.direction, [1, 0, 0]);
});

test('axes that are no tree, and mounts and streams that are not there, are refused', () => {
  const loop: MachineData = {
    ...TRUNNION,
    axes: [axis('A', 1, 'rotary', [1, 0, 0]), axis('B', 0, 'rotary', [0, 1, 0])],
  };
  assert.throws(() => new Kinematics(loop), /not a tree/);
  const kinematics = new Kinematics(TRUNNION);
  assert.throws(() => kinematics.workplace(2), /stream 2/);
  const nameless = new Kinematics({ ...TRUNNION, mounts: [] });
  assert.throws(() => nameless.workplace(1), /"spindle"/);
});
