import {
  BoxGeometry,
  BufferGeometry,
  CylinderGeometry,
  Matrix4,
  Mesh,
  MeshLambertMaterial,
  SphereGeometry,
} from 'three';
import { frame, type Transform } from '../motion/transform.ts';
import type { Solid } from './layout.ts';

export function matrixOf(t: Transform, into = new Matrix4()): Matrix4 {
  const r = t.rotation;
  const p = t.translation;
  return into.set(
    r[0]!,
    r[1]!,
    r[2]!,
    p[0],
    r[3]!,
    r[4]!,
    r[5]!,
    p[1],
    r[6]!,
    r[7]!,
    r[8]!,
    p[2],
    0,
    0,
    0,
    1,
  );
}

function geometryOf(solid: Solid): BufferGeometry {
  const [a = 1, b = 1, c = 1] = solid.size;
  switch (solid.shape) {
    case 'box':
      return new BoxGeometry(a, b, c);
    case 'cylinder':
      return new CylinderGeometry(a, a, b, 48).rotateX(Math.PI / 2);
    case 'sphere':
      return new SphereGeometry(a, 32, 20);
  }
}

export function meshOf(solid: Solid, material: MeshLambertMaterial): Mesh {
  const mesh = new Mesh(geometryOf(solid), material);
  const place = frame(solid.origin, solid.xAxis, solid.zAxis);
  mesh.matrixAutoUpdate = false;
  matrixOf(place, mesh.matrix);
  return mesh;
}
