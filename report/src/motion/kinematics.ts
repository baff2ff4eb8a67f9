/// Where the bodies of a machine stand, and where its tool stands as its part sees it.

import type { AxisData, MachineData, MountData, Triple } from '../data/contract.ts';
import {
  IDENTITY,
  apply,
  compose,
  frame,
  inverse,
  rotate,
  rotationAbout,
  scaled,
  subtract,
  translation,
  type Transform,
} from './transform.ts';

export interface ToolPose {
  readonly position: Triple; // of the tool's end, in part coordinates
  readonly direction: Triple; // from its end to its shank, likewise
}

/// A tool and the part that it works on.
export interface Workplace {
  readonly tool: MountData;
  readonly part: MountData;
}

export function motionOf(axis: AxisData, value: number): Transform {
  return axis.type === 'linear'
    ? translation(scaled(axis.direction, value))
    : rotationAbout(axis.point, axis.direction, value);
}

export function mountFrame(mount: MountData): Transform {
  return frame(mount.origin, mount.xAxis, mount.zAxis);
}

export class Kinematics {
  readonly machine: MachineData;
  private readonly order: readonly number[]; // parents before their children

  constructor(machine: MachineData) {
    this.machine = machine;
    this.order = parentsFirst(machine.axes);
  }

  initialValues(): number[] {
    return this.machine.axes.map((axis) => axis.initial);
  }

  workplace(streamId: number): Workplace {
    const { streams } = this.machine;
    const stream = streams.find((one) => one.id === streamId);
    if (stream === undefined) {
      throw new Error(`stream ${streamId} is not among those of the machine`);
    }
    return { tool: this.mount(stream.tool), part: this.mount(stream.part) };
  }

  /// From coordinates with all axes at zero to where the body of each axis stands.
  bodies(values: ArrayLike<number>): Transform[] {
    const { axes } = this.machine;
    const bodies = new Array<Transform>(axes.length);
    for (const index of this.order) {
      const axis = axes[index]!;
      const own = motionOf(axis, values[index]!);
      bodies[index] = axis.parent < 0 ? own : compose(bodies[axis.parent]!, own);
    }
    return bodies;
  }

  toolPose(place: Workplace, toolLength: number, values: ArrayLike<number>): ToolPose {
    const bodies = this.bodies(values);
    const toolBody = bodyOf(bodies, place.tool.parent);
    const part = compose(bodyOf(bodies, place.part.parent), mountFrame(place.part));
    const seen = inverse(part);
    const end = subtract(place.tool.origin, scaled(place.tool.zAxis, toolLength));
    return {
      position: apply(seen, apply(toolBody, end)),
      direction: rotate(seen, rotate(toolBody, place.tool.zAxis)),
    };
  }

  private mount(name: string): MountData {
    const mount = this.machine.mounts.find((one) => one.name === name);
    if (mount === undefined) {
      throw new Error(`the machine has no mount "${name}"`);
    }
    return mount;
  }
}

export function bodyOf(bodies: readonly Transform[], parent: number): Transform {
  return parent < 0 ? IDENTITY : bodies[parent]!;
}

function parentsFirst(axes: readonly AxisData[]): number[] {
  const order: number[] = [];
  const placed = new Set<number>([-1]);
  while (order.length < axes.length) {
    const before = order.length;
    axes.forEach((axis, index) => {
      if (!placed.has(index) && placed.has(axis.parent)) {
        placed.add(index);
        order.push(index);
      }
    });
    if (order.length === before) {
      throw new Error('the axes of the machine are not a tree');
    }
  }
  return order;
}
