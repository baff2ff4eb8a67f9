/// The machine in three dimensions: draws what the layout says, and moves it.

import {
  AmbientLight,
  Box3,
  CylinderGeometry,
  DirectionalLight,
  EdgesGeometry,
  GridHelper,
  Group,
  HemisphereLight,
  InstancedMesh,
  LineBasicMaterial,
  LineSegments,
  Matrix4,
  Mesh,
  MeshBasicMaterial,
  MeshLambertMaterial,
  OctahedronGeometry,
  Scene,
  Sphere,
  Vector2,
  Vector3,
  WebGLRenderer,
  type Object3D,
} from 'three';
import type { EventData, MachineData, Triple } from '../data/contract.ts';
import type { Rows } from '../data/rows.ts';
import { bodyOf, mountFrame, type Kinematics, type Workplace } from '../motion/kinematics.ts';
import { compose, inverse, translation, type Transform } from '../motion/transform.ts';
import type { Label } from './labels.ts';
import type { Layout } from './layout.ts';
import { AxisDrawing, CompassDrawing, MountDrawing, placed } from './marks.ts';
import { SCENE, type ScenePalette, type Theme } from '../base/palette.ts';
import { PathDrawing } from './PathDrawing.ts';
import { pathLines, type Stretch } from './pathLines.ts';
import { matrixOf, meshOf } from './shapes.ts';
import { Viewpoint, type Side, type UpAxis } from './Viewpoint.ts';

export type CameraOn = 'machine' | 'part';

/// A stretch of rows and where it is run.
export interface PlacedStretch extends Stretch {
  readonly place: Workplace;
  readonly toolLength: number;
}

/// What there is to see at one moment.
export interface Stance {
  readonly values: ArrayLike<number>; // of all axes
  readonly place: Workplace;
  readonly toolLength: number;
  readonly row: number;
}

/// What stands in the drawing, for those who inspect it.
export interface DrawnThing {
  readonly name: string;
  readonly isVisible: boolean;
  readonly position: Triple; // in the coordinates of the drawing
}

const PICK_DISTANCE = 14; // [px]

export class MachineView {
  readonly canvas: HTMLCanvasElement;
  private readonly renderer: WebGLRenderer;
  private readonly scene = new Scene();
  private readonly viewpoint: Viewpoint;
  private readonly root = new Group(); // all of the machine, in its coordinates
  private readonly bodyGroups: Group[];
  private readonly baseGroup = new Group();
  private readonly floorGroup = new Group();
  private readonly tool = new Group();
  private readonly axisDrawings: AxisDrawing[];
  private readonly compasses: CompassDrawing[];
  private readonly labels: Label[] = [];
  private readonly paths: { readonly drawing: PathDrawing; readonly stretch: PlacedStretch }[] = [];
  private readonly materials = {
    tool: new MeshLambertMaterial(),
    part: new MeshLambertMaterial(),
    base: new MeshLambertMaterial({ transparent: true, opacity: 0.3, depthWrite: false }),
    cutter: new MeshLambertMaterial(),
    edges: new LineBasicMaterial({ transparent: true, opacity: 0.35 }),
    failed: new MeshBasicMaterial({ depthTest: false, transparent: true }),
  };
  private grid: GridHelper | null = null;
  private palette: ScenePalette = SCENE.light;
  private stance: Stance | null = null;
  private cameraOn: CameraOn = 'machine';
  private isClose = true;
  private isStale = true;
  private readonly mountMeshes: Object3D[] = [];
  frames = 0;

  /// Throws where the browser gives no WebGL.
  constructor(
    private readonly machine: MachineData,
    private readonly kinematics: Kinematics,
    private readonly layout: Layout,
    private readonly holder: HTMLElement,
  ) {
    this.renderer = new WebGLRenderer({ antialias: true, powerPreference: 'high-performance' });
    this.canvas = this.renderer.domElement;
    this.bodyGroups = machine.axes.map((axis) => stillGroup(`body ${axis.name}`));
    this.root.matrixAutoUpdate = false;
    this.baseGroup.name = 'base';
    this.root.add(this.baseGroup, this.floorGroup, ...this.bodyGroups);
    this.scene.add(this.root);
    this.axisDrawings = machine.axes.map(
      (axis, index) => new AxisDrawing(axis, layout.marks[index]!, layout.size),
    );
    this.compasses = layout.compasses.map(
      (compass) => new CompassDrawing(compass, machine.axes, layout.size),
    );
    this.addLights();
    this.addMachine();
    this.viewpoint = new Viewpoint(this.canvas, () => this.invalidate());
    holder.append(this.canvas);
    new ResizeObserver(() => this.resize()).observe(holder);
    this.resize();
  }

  addPaths(rows: Rows, stretches: readonly PlacedStretch[], failures: readonly EventData[]): void {
    for (const stretch of stretches) {
      const drawing = new PathDrawing(pathLines(rows, stretch, this.layout.size));
      drawing.paint(this.palette);
      const holder = this.onPart(stretch.place);
      holder.add(drawing.group);
      this.paths.push({ drawing, stretch });
      this.markFailures(rows, stretch, failures, holder);
    }
  }

  /// To be called once the paths are there.
  start(stance: Stance, theme: Theme): void {
    this.setTheme(theme);
    this.show(stance);
    this.closeUp();
  }

  show(stance: Stance): void {
    const hasNewTool = this.stance?.place !== stance.place || this.stance.toolLength !== stance.toolLength;
    this.stance = stance;
    if (hasNewTool) {
      this.seatTool(stance.place, stance.toolLength);
    }
    const bodies = this.kinematics.bodies(stance.values);
    bodies.forEach((body, index) => matrixOf(body, this.bodyGroups[index]!.matrix));
    matrixOf(this.cameraOn === 'part' ? this.partAtRest(bodies) : translation([0, 0, 0]), this.root.matrix);
    for (const { drawing, stretch } of this.paths) {
      drawing.showDone(stance.row);
      drawing.group.visible = stretch.place.part === stance.place.part;
    }
    this.invalidate();
  }

  setTheme(theme: Theme): void {
    const palette = SCENE[theme];
    this.palette = palette;
    this.materials.tool.color.set(palette.tool);
    this.materials.part.color.set(palette.part);
    this.materials.base.color.set(palette.base);
    this.materials.cutter.color.set(palette.cutter);
    this.materials.edges.color.set(palette.text);
    this.materials.failed.color.set(palette.failed);
    this.renderer.setClearColor(palette.background);
    this.axisDrawings.forEach((drawing) => drawing.paint(theme));
    this.compasses.forEach((drawing) => drawing.paint(theme));
    this.paths.forEach(({ drawing }) => drawing.paint(palette));
    this.labels.forEach((label) => label.paint(palette, this.renderer.getPixelRatio()));
    this.drawFloor();
    this.scaleLabels();
    this.invalidate();
  }

  setCameraOn(on: CameraOn): void {
    this.cameraOn = on;
    this.refresh();
    this.frameAll(on === 'part');
  }

  setUp(up: UpAxis): void {
    this.viewpoint.setUp(up);
    this.floorGroup.visible = up === 'z';
    this.frameAll(this.isClose);
  }

  look(side: Side): void {
    this.viewpoint.side = side;
    this.frameAll(this.isClose);
  }

  /// Shows all of the machine.
  fit(): void {
    this.frameAll(false);
  }

  /// Shows where tool and part are, with what is next to them.
  closeUp(): void {
    this.frameAll(true);
  }

  /// Turns about the target, to the right and upwards [deg].
  orbit(right: number, upwards: number): void {
    this.viewpoint.orbit(right, upwards);
  }

  zoom(by: number): void {
    this.viewpoint.zoom(by);
  }

  /// The row whose point is drawn under the pointer [px within the canvas].
  pick(x: number, y: number): number | null {
    if (this.stance === null) {
      return null;
    }
    const at = new Vector2(x, y);
    const { width, height } = this.size();
    let best: { row: number; distance: number } | null = null;
    for (const { drawing } of this.paths.filter((path) => path.drawing.group.visible)) {
      const toScreen = this.viewpoint.toPixels(drawing.group.matrixWorld, width, height);
      const picked = drawing.pick(at, toScreen);
      if (best === null || picked.distance < best.distance) {
        best = picked;
      }
    }
    return best !== null && best.distance <= PICK_DISTANCE ? best.row : null;
  }

  /// Draws if something has changed. To be called for each frame.
  frame(): void {
    if (!this.isStale) {
      return;
    }
    this.isStale = false;
    this.frames += 1;
    this.renderer.render(this.scene, this.viewpoint.camera);
  }

  /// What there is to see now, as a picture.
  still(): string {
    this.isStale = true;
    this.frame();
    return this.canvas.toDataURL('image/png');
  }

  things(): DrawnThing[] {
    this.scene.updateMatrixWorld(true);
    const things: DrawnThing[] = [];
    const at = new Vector3();
    this.scene.traverseVisible((thing) => {
      if (thing.name !== '') {
        at.setFromMatrixPosition(thing.matrixWorld);
        things.push({ name: thing.name, isVisible: true, position: [at.x, at.y, at.z] });
      }
    });
    return things;
  }

  private addLights(): void {
    this.scene.add(new HemisphereLight('#ffffff', '#8d8577', 1.6), new AmbientLight('#ffffff', 0.5));
    for (const [x, y, z, strength] of [
      [0.5, -0.9, 1.4, 1.7],
      [-1, 0.4, 0.5, 0.6],
    ] as const) {
      const light = new DirectionalLight('#ffffff', strength);
      light.position.set(x, y, z);
      this.scene.add(light);
    }
  }

  private addMachine(): void {
    for (const solid of this.layout.solids) {
      const mesh = meshOf(solid, this.materialOf(solid.side, solid.color));
      const edges = new LineSegments(new EdgesGeometry(mesh.geometry, 40), this.materials.edges);
      mesh.add(edges);
      this.groupOf(solid.parent).add(mesh);
    }
    this.machine.axes.forEach((axis, index) => {
      const drawing = this.axisDrawings[index]!;
      this.groupOf(axis.parent).add(drawing.onCarrier);
      this.groupOf(index).add(drawing.onBody);
      this.labels.push(drawing.label);
    });
    this.layout.compasses.forEach(({ body }, index) => {
      const drawing = this.compasses[index]!;
      this.groupOf(body).add(drawing.group);
      this.labels.push(...drawing.labels);
    });
    for (const mount of this.machine.mounts) {
      const drawing = new MountDrawing(mount, this.layout.size);
      this.groupOf(mount.parent).add(drawing.group);
      this.labels.push(drawing.label);
      this.mountMeshes.push(...drawing.group.children.filter((child) => child instanceof Mesh));
    }
    this.tool.name = 'tool';
  }

  private materialOf(
    side: 'tool' | 'part' | 'base',
    color: readonly [number, number, number, number] | null,
  ): MeshLambertMaterial {
    if (color === null) {
      return this.materials[side];
    }
    const [r, g, b, opacity] = color;
    const material = new MeshLambertMaterial();
    material.color.setRGB(r, g, b, 'srgb');
    material.opacity = opacity;
    material.transparent = opacity < 1;
    return material;
  }

  private groupOf(parent: number): Group {
    return parent < 0 ? this.baseGroup : this.bodyGroups[parent]!;
  }

  private onPart(place: Workplace): Group {
    const group = stillGroup(`path on ${place.part.name}`);
    matrixOf(mountFrame(place.part), group.matrix);
    this.groupOf(place.part.parent).add(group);
    return group;
  }

  private markFailures(rows: Rows, stretch: Stretch, failures: readonly EventData[], holder: Group): void {
    const inside = failures.filter((one) => one.row >= stretch.begin && one.row < stretch.end);
    if (inside.length === 0) {
      return;
    }
    const shape = new OctahedronGeometry(this.layout.size * 0.007);
    const marks = new InstancedMesh(shape, this.materials.failed, inside.length);
    inside.forEach(({ row }, index) => {
      const [x, y, z] = rows.position.map((column) => column[row]!);
      marks.setMatrixAt(index, new Matrix4().setPosition(x!, y!, z!));
    });
    marks.name = 'failed points';
    marks.renderOrder = 5;
    holder.add(marks);
  }

  /// A slim tool from its end to its seat, thicker where it is held.
  private seatTool(place: Workplace, toolLength: number): void {
    this.tool.clear();
    if (toolLength > 0) {
      const thin = this.layout.size * 0.008;
      const { origin, zAxis } = place.tool;
      const at = (below: number): Triple => [
        origin[0] - zAxis[0] * below,
        origin[1] - zAxis[1] * below,
        origin[2] - zAxis[2] * below,
      ];
      const part = (from: number, to: number, lower: number, upper: number): Mesh => {
        const shape = new CylinderGeometry(upper, lower, (from - to) * toolLength, 24);
        const middle = at(((from + to) / 2) * toolLength);
        return placed(new Mesh(shape, this.materials.cutter), middle, zAxis);
      };
      this.tool.add(
        part(1, 0.94, thin * 0.35, thin),
        part(0.94, 0.4, thin, thin),
        part(0.4, 0, thin * 1.8, thin * 2.6),
      );
    }
    this.groupOf(place.tool.parent).add(this.tool);
  }

  /// Leads to coordinates in which the part does not move, its z axis up.
  private partAtRest(bodies: readonly Transform[]): Transform {
    const { part } = this.stance!.place;
    return inverse(compose(bodyOf(bodies, part.parent), mountFrame(part)));
  }

  private frameAll(isClose: boolean): void {
    this.isClose = isClose;
    this.scene.updateMatrixWorld(true);
    const sphere = (isClose ? this.workBox() : this.machineBox()).getBoundingSphere(new Sphere());
    const radius = Math.max(sphere.radius, this.layout.size * 0.2);
    this.viewpoint.frame(sphere.center, radius * (isClose ? 1.12 : 0.95));
  }

  private machineBox(): Box3 {
    const box = new Box3();
    for (const group of [this.baseGroup, ...this.bodyGroups]) {
      group.children.filter((child) => child instanceof Mesh).forEach((child) => box.expandByObject(child));
    }
    return box.isEmpty() ? this.workBox() : box;
  }

  /// Of the mounts, the tool, and the path on the part; where the camera is on the machine with the
  /// rings of the rotary axes as well.
  private workBox(): Box3 {
    const box = new Box3();
    const shown = this.paths.filter((path) => path.drawing.group.visible);
    shown.forEach((path) => box.expandByObject(path.drawing.group));
    if (this.cameraOn === 'part' && !box.isEmpty()) {
      return box;
    }
    this.machine.axes.forEach((axis, index) => {
      if (axis.type === 'rotary') {
        this.axisDrawings[index]!.onBody.children.forEach((child) => box.expandByObject(child));
      }
    });
    this.compasses.forEach((drawing) =>
      drawing.group.children
        .filter((child) => child instanceof Mesh)
        .forEach((child) => box.expandByObject(child)),
    );
    this.mountMeshes.forEach((mesh) => box.expandByObject(mesh));
    this.tool.children.forEach((child) => box.expandByObject(child));
    return box;
  }

  private drawFloor(): void {
    if (this.grid !== null) {
      this.floorGroup.remove(this.grid);
      this.grid.dispose();
    }
    const across = this.layout.size * 4;
    this.grid = new GridHelper(across, 24, this.palette.floor, this.palette.floorLines);
    this.grid.rotateX(Math.PI / 2);
    this.grid.position.z = this.layout.floor;
    this.floorGroup.add(this.grid);
  }

  private resize(): void {
    const { width, height } = this.size();
    if (width === 0 || height === 0) {
      return;
    }
    this.renderer.setPixelRatio(Math.min(window.devicePixelRatio, 2));
    this.renderer.setSize(width, height, false);
    this.viewpoint.setAspect(width / height);
    this.scaleLabels();
    this.isStale = true;
    this.frame();
  }

  private scaleLabels(): void {
    const { height } = this.size();
    const pixel = this.viewpoint.pixelSize(height);
    this.labels.forEach((label) => label.scale(pixel));
  }

  private size(): { width: number; height: number } {
    return { width: this.holder.clientWidth, height: this.holder.clientHeight };
  }

  private refresh(): void {
    if (this.stance !== null) {
      this.show(this.stance);
    }
  }

  private invalidate(): void {
    this.isStale = true;
  }
}

function stillGroup(name: string): Group {
  const group = new Group();
  group.name = name;
  group.matrixAutoUpdate = false;
  return group;
}
