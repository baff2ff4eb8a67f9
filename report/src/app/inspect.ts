/// What the page tells about itself to tests and to those who look into it: window.trunnion.

import { Flag } from '../data/contract.ts';
import type { Rows } from '../data/rows.ts';
import type { Kinematics } from '../motion/kinematics.ts';
import type { DrawnThing } from '../scene/MachineView.ts';
import type { Stretches } from '../scene/stretches.ts';

/// How far the page's own kinematics are from what a column says.
export interface PoseComparison {
  readonly rows: number; // that were compared: those that have not failed
  readonly position: number; // the most that is left beyond the row's own error [length]
  readonly direction: number; // likewise, of each component
}

export interface Inspection {
  readonly kind: 'run' | 'machine';
  readonly rowCount: number;
  readonly things: () => DrawnThing[]; // what has a name in the drawing and is visible
  readonly still: () => string | null; // the drawing as a data: URL of a PNG; null without WebGL
  readonly setAxis?: (axis: number, value: number) => void; // of a machine page
  readonly decodeMilliseconds?: number;
  readonly row?: () => number; // the chosen one, from 0
  readonly shownRow?: () => number; // the one under the pointer, otherwise the chosen one
  readonly isPlaying?: () => boolean;
  readonly goTo?: (row: number) => void;
  readonly frames?: () => number; // how often the machine was drawn
  readonly plotPoints?: () => number[]; // how many points each plot consists of
  readonly comparePoses?: () => PoseComparison;
}

declare global {
  interface Window {
    trunnion?: Inspection;
  }
}

export function comparePoses(kinematics: Kinematics, rows: Rows, stretches: Stretches): PoseComparison {
  const values = kinematics.initialValues();
  let compared = 0;
  let position = 0;
  let direction = 0;
  for (let row = 0; row < rows.count; ++row) {
    if ((rows.flags[row]! & Flag.failed) !== 0) {
      continue;
    }
    rows.axes.forEach((axis, column) => (values[axis] = rows.joints[column]![row]!));
    const { place, toolLength } = stretches.at(row);
    const pose = kinematics.toolPose(place, toolLength, values);
    const off = (is: readonly number[], asked: readonly Float64Array[]): number =>
      Math.hypot(...is.map((value, k) => value - asked[k]![row]!));
    const allowed = (rows.directionError[row]! * Math.PI) / 180;
    position = Math.max(position, off(pose.position, rows.position) - rows.positionError[row]!);
    direction = Math.max(direction, off(pose.direction, rows.direction) - allowed);
    compared += 1;
  }
  return { rows: compared, position, direction };
}
