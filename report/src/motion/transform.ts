/// Rigid transforms in double precision: x' = rotation * x + translation, the rotation by rows.

import type { Triple } from '../data/contract.ts';

export interface Transform {
  readonly rotation: readonly number[]; // nine numbers
  readonly translation: Triple;
}

export const IDENTITY: Transform = {
  rotation: [1, 0, 0, 0, 1, 0, 0, 0, 1],
  translation: [0, 0, 0],
};

export const add = (a: Triple, b: Triple): Triple => [a[0] + b[0], a[1] + b[1], a[2] + b[2]];
export const subtract = (a: Triple, b: Triple): Triple => [a[0] - b[0], a[1] - b[1], a[2] - b[2]];
export const scaled = (a: Triple, by: number): Triple => [a[0] * by, a[1] * by, a[2] * by];
export const dot = (a: Triple, b: Triple): number => a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
export const length = (a: Triple): number => Math.hypot(a[0], a[1], a[2]);
export const cross = (a: Triple, b: Triple): Triple => [
  a[1] * b[2] - a[2] * b[1],
  a[2] * b[0] - a[0] * b[2],
  a[0] * b[1] - a[1] * b[0],
];

/// At right angles to `a`, as near to `preferred` as that goes, of length 1.
export function normalTo(a: Triple, preferred: Triple): Triple {
  const across = subtract(preferred, scaled(a, dot(a, preferred) / dot(a, a)));
  if (length(across) > 1e-6 * length(preferred)) {
    return scaled(across, 1 / length(across));
  }
  const least = Math.abs(a[0]) < 0.6 * length(a) ? ([1, 0, 0] as const) : ([0, 1, 0] as const);
  return normalTo(a, least);
}

export function rotate(t: Transform, v: Triple): Triple {
  const r = t.rotation;
  return [
    r[0]! * v[0] + r[1]! * v[1] + r[2]! * v[2],
    r[3]! * v[0] + r[4]! * v[1] + r[5]! * v[2],
    r[6]! * v[0] + r[7]! * v[1] + r[8]! * v[2],
  ];
}

export function apply(t: Transform, p: Triple): Triple {
  return add(rotate(t, p), t.translation);
}

export function compose(a: Transform, b: Transform): Transform {
  const rotation = new Array<number>(9);
  for (let row = 0; row < 3; ++row) {
    for (let column = 0; column < 3; ++column) {
      rotation[3 * row + column] =
        a.rotation[3 * row]! * b.rotation[column]! +
        a.rotation[3 * row + 1]! * b.rotation[3 + column]! +
        a.rotation[3 * row + 2]! * b.rotation[6 + column]!;
    }
  }
  return { rotation, translation: apply(a, b.translation) };
}

export function inverse(t: Transform): Transform {
  const r = t.rotation;
  const rotation = [r[0]!, r[3]!, r[6]!, r[1]!, r[4]!, r[7]!, r[2]!, r[5]!, r[8]!];
  const turned = { rotation, translation: [0, 0, 0] as const };
  return { rotation, translation: scaled(rotate(turned, t.translation), -1) };
}

/// The frame whose axes are given, in the coordinates that they are given in.
export function frame(origin: Triple, xAxis: Triple, zAxis: Triple): Transform {
  const y = cross(zAxis, xAxis);
  return {
    rotation: [xAxis[0], y[0], zAxis[0], xAxis[1], y[1], zAxis[1], xAxis[2], y[2], zAxis[2]],
    translation: origin,
  };
}

export function translation(by: Triple): Transform {
  return { rotation: IDENTITY.rotation, translation: by };
}

/// About the line through `point` along `direction`, which has length 1.
export function rotationAbout(point: Triple, direction: Triple, degrees: number): Transform {
  const { cosine, sine } = cosineAndSine(degrees);
  const [x, y, z] = direction;
  const v = 1 - cosine;
  const rotation = [
    cosine + x * x * v,
    x * y * v - z * sine,
    x * z * v + y * sine,
    y * x * v + z * sine,
    cosine + y * y * v,
    y * z * v - x * sine,
    z * x * v - y * sine,
    z * y * v + x * sine,
    cosine + z * z * v,
  ];
  const turned = { rotation, translation: [0, 0, 0] as const };
  return { rotation, translation: subtract(point, rotate(turned, point)) };
}

/// Whole turns are taken off first, so that axes that go on turning lose nothing.
function cosineAndSine(degrees: number): { cosine: number; sine: number } {
  const angle = ((degrees % 360) * Math.PI) / 180;
  return { cosine: Math.cos(angle), sine: Math.sin(angle) };
}
