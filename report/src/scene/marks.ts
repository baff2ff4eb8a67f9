/// The marks of the axes: a guide or a ring on the carrying body, over the travel that there is, with
/// an arrow and a name the positive way, and a pointer on the moving body.

import {
  ConeGeometry,
  Group,
  Mesh,
  MeshBasicMaterial,
  Object3D,
  Quaternion,
  SphereGeometry,
  TorusGeometry,
  CylinderGeometry,
  Vector3,
  type BufferGeometry,
} from 'three';
import type { AxisData, MountData, Triple } from '../data/contract.ts';
import { add, cross, scaled } from '../motion/transform.ts';
import type { AxisMark, Compass } from './layout.ts';
import { Label } from './labels.ts';
import { axisColor, type Theme } from '../base/palette.ts';

const vector = (t: Triple): Vector3 => new Vector3(t[0], t[1], t[2]);

/// Shapes of one colour, some on the body that carries an axis and some on its own.
export class AxisDrawing {
  readonly onCarrier = new Group();
  readonly onBody = new Group();
  readonly label: Label;
  private readonly material = new MeshBasicMaterial();
  private readonly pale = new MeshBasicMaterial({ transparent: true, opacity: 0.45 });
  private readonly axisIndex: number;

  constructor(axis: AxisData, mark: AxisMark, size: number) {
    this.axisIndex = mark.axis;
    this.label = new Label(`${axis.name}+`, () => axisColor(mark.axis, this.theme));
    this.onCarrier.name = `axis ${axis.name}`;
    this.onBody.name = `pointer ${axis.name}`;
    if (axis.type === 'linear') {
      this.drawGuide(axis, mark, size);
    } else {
      this.drawRing(axis, mark, size);
    }
    this.onCarrier.add(this.label.sprite);
  }

  private theme: Theme = 'light';

  paint(theme: Theme): void {
    this.theme = theme;
    const color = axisColor(this.axisIndex, theme);
    this.material.color.set(color);
    this.pale.color.set(color);
  }

  private drawGuide(axis: AxisData, mark: AxisMark, size: number): void {
    const { direction } = axis;
    const thin = size * 0.0026;
    const at = (value: number): Triple => add(mark.origin, scaled(direction, value));
    const head = size * 0.05;
    const along = mark.high - mark.low + head;
    this.onCarrier.add(
      this.along(
        new CylinderGeometry(thin, thin, along, 12),
        at((mark.low + mark.high + head) / 2),
        direction,
      ),
      this.along(new ConeGeometry(thin * 4, head, 20), at(mark.high + head * 1.5), direction),
      this.along(new CylinderGeometry(thin * 3.5, thin * 3.5, thin, 20), at(mark.low), direction),
    );
    this.label.sprite.position.copy(vector(at(mark.high + head * 3)));
    this.onBody.add(this.along(new SphereGeometry(thin * 3, 20, 12), mark.origin, direction));
  }

  /// The angle is counted from `zero`, about the axis.
  private drawRing(axis: AxisData, mark: AxisMark, size: number): void {
    const { direction } = axis;
    const thin = size * 0.003;
    const across = cross(direction, mark.zero);
    const at = (degrees: number, radius = mark.radius): Triple => {
      const angle = (degrees * Math.PI) / 180;
      return add(
        mark.origin,
        add(scaled(mark.zero, Math.cos(angle) * radius), scaled(across, Math.sin(angle) * radius)),
      );
    };
    const ring = (tube: number, from: number, to: number, material: MeshBasicMaterial): Mesh => {
      const sweep = Math.min(to - from, 360);
      const shape = new TorusGeometry(mark.radius, tube, 10, 96, (sweep * Math.PI) / 180);
      const made = new Mesh(shape.rotateZ((from * Math.PI) / 180), material);
      made.matrixAutoUpdate = false;
      made.matrix.makeBasis(vector(mark.zero), vector(across), vector(direction));
      made.matrix.setPosition(vector(mark.origin));
      return made;
    };
    this.onCarrier.add(ring(thin * 0.6, 0, 360, this.pale), ring(thin, mark.low, mark.high, this.material));
    const head = size * 0.045;
    const arrow = Math.min(mark.high, 180) * 0.6;
    const angle = (arrow * Math.PI) / 180;
    const tangent = add(scaled(mark.zero, -Math.sin(angle)), scaled(across, Math.cos(angle)));
    this.onCarrier.add(this.along(new ConeGeometry(thin * 4, head, 20), at(arrow), tangent));
    this.label.sprite.position.copy(vector(at(arrow + 14, mark.radius * 1.12)));
    this.onBody.add(
      this.along(new SphereGeometry(thin * 3, 20, 12), at(0), direction),
      this.along(
        new CylinderGeometry(thin * 0.8, thin * 0.8, mark.radius * 0.35, 10),
        at(0, mark.radius * 0.83),
        mark.zero,
      ),
    );
  }

  /// A shape of three's, which stand along y, put along `direction`.
  private along(geometry: BufferGeometry, origin: Triple, direction: Triple): Mesh {
    return placed(new Mesh(geometry, this.material), origin, direction);
  }
}

/// Short arrows the positive way of linear axes, at the work.
export class CompassDrawing {
  readonly group = new Group();
  readonly labels: Label[];
  private readonly materials: { readonly axis: number; readonly material: MeshBasicMaterial }[] = [];
  private theme: Theme = 'light';

  constructor(compass: Compass, axes: readonly AxisData[], size: number) {
    this.group.name = `compass of ${compass.axes.map((index) => axes[index]!.name).join(', ')}`;
    const thin = size * 0.003;
    const long = size * 0.09;
    this.labels = compass.axes.map((index) => {
      const { direction, name } = axes[index]!;
      const material = new MeshBasicMaterial();
      this.materials.push({ axis: index, material });
      const at = (distance: number): Triple => add(compass.origin, scaled(direction, distance));
      const label = new Label(`${name}+`, () => axisColor(index, this.theme));
      label.sprite.position.copy(vector(at(long * 1.55)));
      this.group.add(
        placed(new Mesh(new CylinderGeometry(thin, thin, long, 12), material), at(long / 2), direction),
        placed(new Mesh(new ConeGeometry(thin * 3.5, long * 0.3, 20), material), at(long * 1.15), direction),
        label.sprite,
      );
      return label;
    });
  }

  paint(theme: Theme): void {
    this.theme = theme;
    this.materials.forEach(({ axis, material }) => material.color.set(axisColor(axis, theme)));
  }
}

export function placed<T extends Object3D>(object: T, origin: Triple, direction: Triple): T {
  object.position.copy(vector(origin));
  object.quaternion.copy(turnedTo(direction));
  return object;
}

function turnedTo(direction: Triple): Quaternion {
  return new Quaternion().setFromUnitVectors(new Vector3(0, 1, 0), vector(direction).normalize());
}

/// The frame of a mount: x red, y green, z blue, and its name.
export class MountDrawing {
  readonly group = new Group();
  readonly label: Label;

  constructor(mount: MountData, size: number) {
    this.group.name = `mount ${mount.name}`;
    this.label = new Label(mount.name, (palette) => palette.text);
    const arrow = size * 0.075;
    const thin = size * 0.0028;
    const axes: [Triple, string][] = [
      [mount.xAxis, '#d1495b'],
      [cross(mount.zAxis, mount.xAxis), '#3a9e6a'],
      [mount.zAxis, '#3f7fd6'],
    ];
    for (const [direction, color] of axes) {
      const material = new MeshBasicMaterial({ color });
      const at = (share: number): Triple => add(mount.origin, scaled(direction, arrow * share));
      this.group.add(
        placed(new Mesh(new CylinderGeometry(thin, thin, arrow, 10), material), at(0.5), direction),
        placed(new Mesh(new ConeGeometry(thin * 3, arrow * 0.25, 16), material), at(1.1), direction),
      );
    }
    const beside = add(mount.origin, scaled(mount.xAxis, arrow * 1.5));
    this.label.sprite.position.copy(vector(beside));
    this.group.add(this.label.sprite);
  }
}
