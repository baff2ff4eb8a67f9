/// From where the drawing is seen: the camera and what moves it.

import { Matrix4, PerspectiveCamera, Vector3, type Sphere } from 'three';
import { OrbitControls } from 'three/addons/controls/OrbitControls.js';

export type UpAxis = 'x' | 'y' | 'z';
export type Side = 'oblique' | 'front' | 'right' | 'top';

const FIELD_OF_VIEW = 32; // [deg], upright
const NEAREST_TO_UP = 0.02; // that turning by keys brings the camera [rad]

const radians = (degrees: number): number => (degrees * Math.PI) / 180;

/// Towards the camera, where z points up. Not quite along an axis, so that up remains up.
const SIDES: Readonly<Record<Side, readonly [number, number, number]>> = {
  oblique: [0.75, -1.25, 0.75],
  front: [0, -1, 0.001],
  right: [1, 0, 0.001],
  top: [0, -0.001, 1],
};

export class Viewpoint {
  readonly camera = new PerspectiveCamera(FIELD_OF_VIEW, 1, 1, 1000);
  private controls: OrbitControls;
  private up: UpAxis = 'z';
  side: Side = 'oblique';

  constructor(
    private readonly canvas: HTMLCanvasElement,
    private readonly changed: () => void,
  ) {
    this.camera.up.set(0, 0, 1);
    this.controls = this.makeControls();
  }

  setUp(up: UpAxis): void {
    this.up = up;
    this.camera.up.copy(this.turnedUp(0, 0, 1));
    this.controls.dispose();
    this.controls = this.makeControls();
  }

  setAspect(aspect: number): void {
    this.camera.aspect = aspect;
    this.camera.updateProjectionMatrix();
  }

  /// What a pixel of a picture of this height measures at a distance of 1.
  pixelSize(height: number): number {
    return (2 * Math.tan(radians(FIELD_OF_VIEW / 2))) / Math.max(height, 1);
  }

  /// Takes the side that is set, so far off that a sphere fills the picture.
  frame(center: Sphere['center'], radius: number): void {
    const narrow = Math.min(1, this.camera.aspect);
    const half = Math.atan(Math.tan(radians(FIELD_OF_VIEW / 2)) * narrow);
    const distance = radius / Math.sin(half);
    const direction = this.turnedUp(...SIDES[this.side]).normalize();
    this.controls.target.copy(center);
    this.camera.position.copy(direction).multiplyScalar(distance).add(center);
    this.camera.near = distance / 100;
    this.camera.far = distance * 20;
    this.camera.updateProjectionMatrix();
    this.controls.update();
    this.changed();
  }

  /// Turns about the target, to the right and upwards [deg].
  orbit(right: number, upwards: number): void {
    const { camera } = this;
    const offset = camera.position.clone().sub(this.controls.target);
    offset.applyAxisAngle(camera.up, radians(right));
    const across = new Vector3().crossVectors(camera.up, offset).normalize();
    const raised = offset.clone().applyAxisAngle(across, -radians(upwards));
    const fromUp = raised.angleTo(camera.up);
    const isAllowed = fromUp > NEAREST_TO_UP && fromUp < Math.PI - NEAREST_TO_UP;
    camera.position.copy(this.controls.target).add(isAllowed ? raised : offset);
    this.controls.update();
  }

  zoom(by: number): void {
    const { position } = this.camera;
    position.sub(this.controls.target).divideScalar(by).add(this.controls.target);
    this.controls.update();
  }

  /// From coordinates of an object in the drawing to pixels of a picture of this size.
  toPixels(matrixWorld: Matrix4, width: number, height: number): Matrix4 {
    return new Matrix4()
      .makeScale(width / 2, -height / 2, 1)
      .setPosition(width / 2, height / 2, 0)
      .multiply(this.camera.projectionMatrix)
      .multiply(this.camera.matrixWorldInverse)
      .multiply(matrixWorld);
  }

  /// What would be (x, y, z) if z pointed up.
  private turnedUp(x: number, y: number, z: number): Vector3 {
    switch (this.up) {
      case 'x':
        return new Vector3(z, x, y);
      case 'y':
        return new Vector3(y, z, x);
      case 'z':
        return new Vector3(x, y, z);
    }
  }

  /// They read the camera's up direction when they are made.
  private makeControls(): OrbitControls {
    const controls = new OrbitControls(this.camera, this.canvas);
    controls.enableDamping = false;
    controls.addEventListener('change', this.changed);
    return controls;
  }
}
