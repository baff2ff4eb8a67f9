/// The toolpath of one stretch: what is still to come pale, what is done strong, rapids apart.

import {
  BufferAttribute,
  BufferGeometry,
  Group,
  LineBasicMaterial,
  LineSegments,
  Matrix4,
  type Vector2Like,
} from 'three';
import type { ScenePalette } from '../base/palette.ts';
import { countUpTo, type PathLines, type Segments } from './pathLines.ts';

export interface Picked {
  readonly row: number;
  readonly distance: number; // on the screen [px]
}

export class PathDrawing {
  readonly group = new Group();
  private readonly done: { readonly segments: Segments; readonly geometry: BufferGeometry }[] = [];
  private readonly materials = {
    ahead: new LineBasicMaterial(),
    rapidAhead: new LineBasicMaterial({ transparent: true, opacity: 0.4 }),
    done: new LineBasicMaterial(),
    rapid: new LineBasicMaterial(),
  };

  constructor(readonly lines: PathLines) {
    this.group.name = 'toolpath';
    const positions = new BufferAttribute(lines.positions, 3);
    const { ahead, rapidAhead, done, rapid } = this.materials;
    this.addPair(positions, lines.cuts, ahead, done);
    this.addPair(positions, lines.rapids, rapidAhead, rapid);
  }

  paint(palette: ScenePalette): void {
    this.materials.ahead.color.set(palette.ahead);
    this.materials.rapidAhead.color.set(palette.rapid);
    this.materials.done.color.set(palette.done);
    this.materials.rapid.color.set(palette.rapid);
  }

  showDone(row: number): void {
    for (const { segments, geometry } of this.done) {
      geometry.setDrawRange(0, 2 * countUpTo(segments, row));
    }
  }

  /// The row drawn nearest to a place on the screen; `toScreen` leads from the path to pixels.
  pick(at: Vector2Like, toScreen: Matrix4): Picked {
    const e = toScreen.elements;
    const { positions, kept } = this.lines;
    let nearest = Infinity;
    let found = 0;
    for (let index = 0; index < kept.length; ++index) {
      const x = positions[3 * index]!;
      const y = positions[3 * index + 1]!;
      const z = positions[3 * index + 2]!;
      const w = e[3]! * x + e[7]! * y + e[11]! * z + e[15]!;
      const dx = (e[0]! * x + e[4]! * y + e[8]! * z + e[12]!) / w - at.x;
      const dy = (e[1]! * x + e[5]! * y + e[9]! * z + e[13]!) / w - at.y;
      const distance = dx * dx + dy * dy;
      if (w > 0 && distance < nearest) {
        nearest = distance;
        found = index;
      }
    }
    return { row: kept[found]!, distance: Math.sqrt(nearest) };
  }

  private addPair(
    positions: BufferAttribute,
    segments: Segments,
    ahead: LineBasicMaterial,
    done: LineBasicMaterial,
  ): void {
    const index = new BufferAttribute(segments.indices, 1);
    const lines = [ahead, done].map((material) => {
      const geometry = new BufferGeometry();
      geometry.setAttribute('position', positions);
      geometry.setIndex(index);
      return new LineSegments(geometry, material);
    });
    lines[1]!.renderOrder = 1;
    lines[1]!.frustumCulled = false;
    this.done.push({ segments, geometry: lines[1]!.geometry });
    this.group.add(...lines);
  }
}
