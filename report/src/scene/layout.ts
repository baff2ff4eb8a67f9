/// What a machine looks like when only its axes are known: rails for linear axes, tables, heads and
/// trunnions for rotary ones, stacked from each mount towards the base. Everything is in machine
/// coordinates with all axes at zero; where bodies are on their axis is given, the rest is made up in
/// proportion to the machine's size.

import type { AxisData, MachineData, MountData, Triple } from '../data/contract.ts';
import { add, cross, dot, length, normalTo, scaled, subtract } from '../motion/transform.ts';

export interface Solid {
  readonly parent: number;
  readonly side: 'tool' | 'part' | 'base';
  readonly shape: 'box' | 'cylinder' | 'sphere';
  readonly size: readonly number[]; // box x, y, z; cylinder radius, length along z; sphere radius
  readonly origin: Triple;
  readonly xAxis: Triple;
  readonly zAxis: Triple;
  readonly color: readonly [number, number, number, number] | null;
}

/// Where an axis is marked with its name and its positive direction.
export interface AxisMark {
  readonly axis: number;
  readonly origin: Triple; // of value 0, in the coordinates of the carrying body
  readonly zero: Triple; // rotary: the direction from there to the pointer at 0
  readonly radius: number; // rotary
  readonly low: number; // what is drawn of it
  readonly high: number;
}

/// Arrows at the work, for linear axes whose rails are far from it: on a body that they move without
/// turning it.
export interface Compass {
  readonly body: number;
  readonly origin: Triple;
  readonly axes: readonly number[];
}

export interface Layout {
  readonly size: number;
  readonly floor: number; // its z
  readonly solids: readonly Solid[];
  readonly marks: readonly AxisMark[]; // one an axis, in the machine's order
  readonly compasses: readonly Compass[];
}

/// What the tool passes in the coordinates of a part, rapids apart.
export interface PathExtent {
  readonly radius: number; // about the z axis
  readonly low: number; // along z
  readonly high: number;
}

interface Rails {
  readonly direction: Triple;
  readonly half: number;
}

/// What has been put together so far, seen from the mount: its outer end, and on what rails it rests.
interface Stack {
  readonly mount: MountData;
  readonly out: Triple; // away from the work, towards the base
  readonly extent: PathExtent;
  readonly end: Triple;
  readonly rails: Rails | null;
  readonly isStanding: boolean; // on its own posts
}

const X: Triple = [1, 0, 0];
const Y: Triple = [0, 1, 0];
const Z: Triple = [0, 0, 1];

export function travelShown(axis: AxisData, size: number): readonly [number, number] {
  const [low, high] = axis.limits;
  const open = axis.type === 'linear' ? size / 2 : 180;
  if (low === null && high === null) {
    return [-open, open];
  }
  return [low ?? high! - 2 * open, high ?? low! + 2 * open];
}

class LayoutBuilder {
  readonly solids: Solid[] = [];
  readonly marks = new Map<number, AxisMark>();
  private readonly compasses: Compass[] = [];
  private readonly posts: Triple[] = [];
  readonly size: number;

  constructor(
    private readonly machine: MachineData,
    private readonly extents: ReadonlyMap<string, PathExtent>,
  ) {
    this.size = machineSize(machine, extents);
  }

  build(): Layout {
    const hasVisuals = this.machine.visuals !== null && this.machine.visuals.length > 0;
    this.machine.mounts.forEach((mount) => this.stackFrom(mount));
    this.markTheRest();
    if (hasVisuals) {
      this.marks.forEach((mark, axis) => this.marks.set(axis, { ...mark, radius: mark.radius * 1.35 }));
      this.solids.length = 0;
      this.posts.length = 0;
      this.takeVisuals();
    }
    const floor = this.lowest() - 0.12 * this.size;
    this.posts.forEach((top) => this.addPost(top, floor));
    return {
      size: this.size,
      floor,
      solids: this.solids,
      marks: this.machine.axes.map((_, index) => this.marks.get(index)!),
      compasses: this.compasses,
    };
  }

  private unit(share: number): number {
    return share * this.size;
  }

  private stackFrom(mount: MountData): void {
    let stack = mount.kind === 'tool' ? this.spindle(mount) : this.plate(mount);
    let body = mount.parent;
    this.addCompass(stack);
    while (body >= 0 && !this.marks.has(body)) {
      const axis = this.machine.axes[body]!;
      stack = axis.type === 'linear' ? this.linear(stack, body) : this.rotary(stack, body);
      body = axis.parent;
    }
    if (body < 0) {
      this.standOnFloor(stack);
    }
  }

  /// Of the first linear axes from the mount inwards that follow one another.
  private addCompass({ mount, out, extent }: Stack): void {
    const { axes } = this.machine;
    let body = mount.parent;
    while (body >= 0 && axes[body]!.type === 'rotary') {
      body = axes[body]!.parent;
    }
    const found: number[] = [];
    for (let at = body; at >= 0 && axes[at]!.type === 'linear'; at = axes[at]!.parent) {
      found.push(at);
    }
    if (found.length === 0 || found.some((axis) => this.compasses.some((one) => one.axes.includes(axis)))) {
      return;
    }
    const across = normalTo(out, [-1, -0.6, 0]);
    const beside = mount.kind === 'tool' ? this.unit(0.26) : extent.radius + this.unit(0.16);
    const along = scaled(out, this.unit(mount.kind === 'tool' ? 0.1 : 0.05));
    this.compasses.push({ body, origin: add(add(mount.origin, along), scaled(across, beside)), axes: found });
  }

  private spindle(mount: MountData): Stack {
    const { origin, zAxis, parent } = mount;
    const at = (share: number): Triple => add(origin, scaled(zAxis, this.unit(share)));
    this.cylinder(parent, 'tool', at(0.015), zAxis, 0.03, 0.03);
    this.cylinder(parent, 'tool', at(0.09), zAxis, 0.05, 0.12);
    return { mount, out: zAxis, extent: NO_PATH, end: at(0.14), rails: null, isStanding: false };
  }

  private plate(mount: MountData): Stack {
    const { origin, zAxis, xAxis, parent } = mount;
    const extent = this.extents.get(mount.name) ?? {
      radius: this.unit(0.2),
      low: 0,
      high: 0,
    };
    const radius = Math.max(extent.radius * 1.12, this.unit(0.08));
    const thick = this.unit(0.035);
    const top = add(origin, scaled(zAxis, Math.min(0, extent.low) - this.unit(0.004)));
    const carrier = this.machine.axes[parent];
    const center = subtract(top, scaled(zAxis, thick / 2));
    const isRound = carrier?.type === 'rotary' && Math.abs(dot(carrier.direction, zAxis)) > 0.9;
    this.solids.push({
      parent,
      side: 'part',
      shape: isRound ? 'cylinder' : 'box',
      size: isRound ? [radius, thick] : [2 * radius, 2 * radius, thick],
      origin: center,
      xAxis,
      zAxis,
      color: null,
    });
    return {
      mount,
      out: scaled(zAxis, -1),
      extent: { ...extent, radius },
      end: subtract(top, scaled(zAxis, thick)),
      rails: null,
      isStanding: false,
    };
  }

  private linear(stack: Stack, index: number): Stack {
    const { direction } = this.machine.axes[index]!;
    return Math.abs(dot(direction, stack.out)) > 0.7 ? this.ram(stack, index) : this.carriage(stack, index);
  }

  /// Rails on the carrying body, to either side of what moves, and blocks on them.
  private carriage(stack: Stack, index: number): Stack {
    const { axis, side, travel } = this.linearAxis(stack, index);
    const out = normalTo(axis.direction, stack.out);
    const across = cross(out, axis.direction);
    const thick = this.unit(0.04);
    const previous = stack.rails;
    const reach = previous === null ? 0 : Math.abs(dot(previous.direction, across)) * previous.half;
    const gap = Math.max(this.unit(0.1), reach);
    const middle = add(stack.end, scaled(out, thick / 2));
    const low = travel[0] - this.unit(0.09);
    const high = travel[1] + this.unit(0.09);
    const onRails = add(middle, scaled(out, thick));
    const center = add(onRails, scaled(axis.direction, (low + high) / 2));
    this.box(index, side, middle, axis.direction, out, 0.16, (2 * gap) / this.size + 0.04, 0.03);
    for (const sign of [-1, 1]) {
      const beside = scaled(across, sign * gap);
      this.box(index, side, add(onRails, beside), axis.direction, out, 0.16, 0.05, 0.045);
      this.box(
        axis.parent,
        side,
        add(center, beside),
        axis.direction,
        out,
        (high - low) / this.size,
        0.022,
        0.022,
      );
    }
    const edge = add(onRails, scaled(across, gap + this.unit(0.045)));
    this.mark(index, edge, across, 0, travel);
    return {
      ...stack,
      end: add(center, scaled(out, this.unit(0.02))),
      rails: { direction: axis.direction, half: (high - low) / 2 },
      isStanding: false,
    };
  }

  /// A beam on the moving body that slides in a sleeve of the carrying one, away from the work.
  private ram(stack: Stack, index: number): Stack {
    const { axis, side, travel } = this.linearAxis(stack, index);
    const sign = Math.sign(dot(axis.direction, stack.out));
    const out = scaled(axis.direction, sign);
    const highest = sign > 0 ? travel[1] : -travel[0];
    const stroke = travel[1] - travel[0];
    const beam = stroke + this.unit(0.2);
    const across = normalTo(out, Math.abs(dot(out, X)) > 0.7 ? Y : X);
    const beamMiddle = add(stack.end, scaled(out, beam / 2));
    this.box(index, side, beamMiddle, across, out, 0.075, 0.075, beam / this.size);
    const sleeve = add(stack.end, scaled(out, highest + this.unit(0.1)));
    this.box(axis.parent, side, sleeve, across, out, 0.13, 0.13, 0.1);
    const edge = add(stack.end, scaled(across, this.unit(0.1)));
    this.mark(index, edge, across, 0, travel);
    return { ...stack, end: add(sleeve, scaled(out, this.unit(0.05))), rails: null, isStanding: false };
  }

  private rotary(stack: Stack, index: number): Stack {
    const axis = this.machine.axes[index]!;
    const foot = onAxis(axis, stack.end);
    const along = Math.abs(dot(axis.direction, stack.out));
    if (along > 0.9 && length(subtract(stack.end, foot)) < this.unit(0.5)) {
      return this.turntable(stack, index, foot);
    }
    return along < 0.3 && stack.mount.kind === 'part'
      ? this.cradle(stack, index, foot)
      : this.knuckle(stack, index, foot);
  }

  /// The axis goes through what it turns, along the stack.
  private turntable(stack: Stack, index: number, foot: Triple): Stack {
    const axis = this.machine.axes[index]!;
    const side = stack.mount.kind;
    const radius = side === 'part' ? stack.extent.radius : this.unit(0.07);
    const at = (distance: number): Triple => add(foot, scaled(stack.out, distance));
    this.cylinder(index, side, at(this.unit(0.02)), stack.out, 0.05, 0.04);
    this.cylinder(axis.parent, side, at(this.unit(0.07)), stack.out, (0.8 * radius) / this.size, 0.06);
    const zero = normalTo(axis.direction, stack.mount.xAxis);
    this.mark(index, at(side === 'part' ? 0 : this.unit(0.04)), zero, radius + this.unit(0.03));
    return { ...stack, end: at(this.unit(0.1)), rails: null, isStanding: false };
  }

  /// A table hung between two bearings.
  private cradle(stack: Stack, index: number, foot: Triple): Stack {
    const axis = this.machine.axes[index]!;
    const n = axis.direction;
    const half = stack.extent.radius + this.unit(0.06);
    const level = add(stack.end, scaled(stack.out, this.unit(0.015)));
    const toLevel = subtract(level, foot);
    const up = normalTo(n, length(toLevel) > this.unit(0.02) ? toLevel : stack.out);
    const height = dot(toLevel, up);
    const center = subtract(level, scaled(n, dot(toLevel, n)));
    this.box(index, 'part', center, n, up, (2 * half) / this.size + 0.03, 0.16, 0.03);
    for (const sign of [-1, 1]) {
      const end = scaled(n, sign * half);
      const arm = add(add(foot, end), scaled(up, height / 2));
      this.box(index, 'part', arm, n, up, 0.03, 0.1, Math.abs(height) / this.size + 0.08);
      const journal = add(foot, scaled(n, sign * (half + this.unit(0.03))));
      this.cylinder(index, 'part', journal, n, 0.035, 0.05);
      const bearing = add(foot, scaled(n, sign * (half + this.unit(0.07))));
      this.box(axis.parent, 'part', bearing, n, Z, 0.05, 0.12, 0.12);
      if (axis.parent < 0) {
        this.posts.push(bearing);
      }
    }
    const marked = add(foot, scaled(n, half + this.unit(0.1)));
    this.mark(index, marked, normalTo(n, scaled(stack.out, -1)), this.unit(0.1));
    const below = add(foot, scaled(stack.out, this.unit(0.18)));
    if (axis.parent >= 0) {
      this.box(axis.parent, 'part', below, n, stack.out, (2 * half) / this.size + 0.19, 0.12, 0.03);
    }
    const end = add(below, scaled(stack.out, this.unit(0.015)));
    return { ...stack, end, rails: null, isStanding: axis.parent < 0 };
  }

  /// A joint of its own, with an arm to what it turns.
  private knuckle(stack: Stack, index: number, foot: Triple): Stack {
    const axis = this.machine.axes[index]!;
    const side = stack.mount.kind;
    this.strut(index, side, stack.end, foot);
    this.cylinder(index, side, foot, axis.direction, 0.06, 0.1);
    const up = normalTo(axis.direction, stack.out);
    const bridge = add(foot, scaled(up, this.unit(0.1)));
    this.box(axis.parent, side, bridge, axis.direction, up, 0.16, 0.1, 0.03);
    for (const sign of [-1, 1]) {
      const cheek = add(foot, scaled(axis.direction, sign * this.unit(0.065)));
      const middle = add(cheek, scaled(up, this.unit(0.03)));
      this.box(axis.parent, side, middle, axis.direction, up, 0.03, 0.1, 0.15);
    }
    const marked = add(foot, scaled(axis.direction, this.unit(0.085)));
    this.mark(index, marked, scaled(up, -1), this.unit(0.1));
    const end = add(bridge, scaled(up, this.unit(0.015)));
    return { ...stack, end, rails: null, isStanding: false };
  }

  /// Rails that lie level stand on posts, and so does what stands by itself.
  private standOnFloor(stack: Stack): void {
    if (Math.abs(stack.out[2]) < 0.9 || stack.isStanding) {
      return;
    }
    if (stack.rails === null) {
      if (stack.mount.kind === 'part') {
        this.posts.push(stack.end);
      }
      return;
    }
    const { direction } = stack.rails;
    const last = this.solids.filter((solid) => solid.parent < 0 && solid.shape === 'box').slice(-2);
    for (const rail of last) {
      for (const sign of [-1, 1]) {
        const end = scaled(direction, sign * (rail.size[0]! / 2 - this.unit(0.02)));
        this.posts.push(add(rail.origin, end));
      }
    }
  }

  private addPost(top: Triple, floor: number): void {
    const height = top[2] - floor;
    const middle: Triple = [top[0], top[1], floor + height / 2];
    this.box(-1, 'base', middle, X, Z, 0.035, 0.035, height / this.size);
  }

  private lowest(): number {
    const bottoms = this.solids.map((solid) => {
      const reach = solid.shape === 'sphere' ? solid.size[0]! : Math.hypot(...solid.size) / 2;
      const isUpright = Math.abs(solid.zAxis[2]) > 0.99 && solid.shape !== 'sphere';
      return solid.origin[2] - (isUpright ? solid.size.at(-1)! / 2 : reach);
    });
    const mounts = this.machine.mounts.map((mount) => mount.origin[2]);
    return Math.min(...bottoms, ...mounts);
  }

  private takeVisuals(): void {
    for (const visual of this.machine.visuals ?? []) {
      this.solids.push({ ...visual, side: visual.parent < 0 ? 'base' : this.sideOf(visual.parent) });
    }
  }

  private sideOf(body: number): 'tool' | 'part' {
    const carriesPart = this.machine.mounts.some((mount) => {
      let at = mount.parent;
      while (at >= 0 && at !== body) {
        at = this.machine.axes[at]!.parent;
      }
      return at === body && mount.kind === 'part';
    });
    return carriesPart ? 'part' : 'tool';
  }

  /// Axes that carry no mount.
  private markTheRest(): void {
    this.machine.axes.forEach((axis, index) => {
      if (this.marks.has(index)) {
        return;
      }
      const travel = travelShown(axis, this.size);
      const zero = normalTo(axis.direction, Z);
      this.mark(index, axis.point, zero, this.unit(0.1), travel);
    });
  }

  private linearAxis(
    stack: Stack,
    index: number,
  ): { axis: AxisData; side: 'tool' | 'part'; travel: readonly [number, number] } {
    const axis = this.machine.axes[index]!;
    return { axis, side: stack.mount.kind, travel: travelShown(axis, this.size) };
  }

  private mark(
    axis: number,
    origin: Triple,
    zero: Triple,
    radius: number,
    travel = travelShown(this.machine.axes[axis]!, this.size),
  ): void {
    this.marks.set(axis, { axis, origin, zero, radius, low: travel[0], high: travel[1] });
  }

  private strut(parent: number, side: Solid['side'], from: Triple, to: Triple): void {
    const way = subtract(to, from);
    const distance = length(way);
    if (distance < this.unit(0.01)) {
      return;
    }
    const direction = scaled(way, 1 / distance);
    const middle = add(from, scaled(way, 0.5));
    this.box(parent, side, middle, normalTo(direction, X), direction, 0.06, 0.06, distance / this.size);
  }

  /// Sizes as shares of the machine's.
  private box(
    parent: number,
    side: Solid['side'],
    origin: Triple,
    xAxis: Triple,
    zAxis: Triple,
    x: number,
    y: number,
    z: number,
  ): void {
    const size = [x, y, z].map((share) => this.unit(share));
    this.solids.push({ parent, side, shape: 'box', size, origin, xAxis, zAxis, color: null });
  }

  private cylinder(
    parent: number,
    side: Solid['side'],
    origin: Triple,
    zAxis: Triple,
    radius: number,
    height: number,
  ): void {
    const size = [this.unit(radius), this.unit(height)];
    const xAxis = normalTo(zAxis, X);
    this.solids.push({ parent, side, shape: 'cylinder', size, origin, xAxis, zAxis, color: null });
  }
}

const NO_PATH: PathExtent = { radius: 0, low: 0, high: 0 };

function onAxis(axis: AxisData, near: Triple): Triple {
  const along = dot(subtract(near, axis.point), axis.direction);
  return add(axis.point, scaled(axis.direction, along));
}

/// A length that the machine is drawn in proportion to.
function machineSize(machine: MachineData, extents: ReadonlyMap<string, PathExtent>): number {
  const points = machine.mounts.map((mount) => mount.origin);
  for (const mount of machine.mounts) {
    for (let at = mount.parent; at >= 0; at = machine.axes[at]!.parent) {
      const axis = machine.axes[at]!;
      if (axis.type === 'rotary') {
        points.push(onAxis(axis, mount.origin));
      }
    }
    const extent = extents.get(mount.name);
    if (extent !== undefined) {
      for (const z of [extent.low, extent.high]) {
        for (const side of [-1, 1]) {
          const r = side * extent.radius;
          points.push(add(mount.origin, [r, r, z]));
        }
      }
    }
  }
  const spans = [0, 1, 2].map((i) => {
    const values = points.map((point) => point[i]!);
    return Math.max(...values) - Math.min(...values);
  });
  const travels = machine.axes.map((axis) => {
    const [low, high] = axis.limits;
    return axis.type === 'linear' && low !== null && high !== null ? (high - low) / 3 : 0;
  });
  return Math.max(Math.hypot(...spans), ...travels) || 100;
}

export function layoutMachine(machine: MachineData, extents: ReadonlyMap<string, PathExtent>): Layout {
  return new LayoutBuilder(machine, extents).build();
}
