/// The rows of a run as typed arrays, decoded in slices so that the page stays alive meanwhile.

import type { RowsData } from './contract.ts';
import { PackedReader } from './packed.ts';

export interface Rows {
  readonly count: number;
  readonly axes: readonly number[]; // index into the machine's axes, of each joint column
  readonly joints: readonly Float64Array[];
  readonly position: readonly [Float64Array, Float64Array, Float64Array];
  readonly direction: readonly [Float64Array, Float64Array, Float64Array];
  readonly point: Float64Array;
  readonly line: Float64Array;
  readonly flags: Uint8Array;
  readonly branch: Float64Array;
  readonly positionError: Float64Array;
  readonly directionError: Float64Array;
  readonly feed: Float64Array;
  readonly decimals: Readonly<Record<string, number>>;
}

const ROWS_A_TURN = 50_000;
const MILLISECONDS_A_TURN = 24;

export type Pause = () => Promise<void>;

function nextTask(): Promise<void> {
  return new Promise((resolve) => setTimeout(resolve, 0));
}

/// Calls `progress` with the share that is done whenever it pauses.
export async function decodeRows(
  data: RowsData,
  progress: (share: number) => void = () => {},
  pause: Pause = nextTask,
  now: () => number = () => performance.now(),
): Promise<Rows> {
  const count = data.count;
  const total = data.axes.length + 13;
  let done = 0;
  let since = now();
  const decimals: Record<string, number> = {};

  async function numbers(name: string): Promise<Float64Array> {
    const column = data.columns[name];
    if (column === undefined) {
      throw new Error(`the column "${name}" is missing`);
    }
    decimals[name] = column.decimals;
    const reader = new PackedReader(column);
    const target = new Float64Array(count);
    for (let row = 0; row < count; row += ROWS_A_TURN) {
      reader.read(target, row, Math.min(row + ROWS_A_TURN, count));
      if (now() - since > MILLISECONDS_A_TURN) {
        progress((done + row / count) / total);
        await pause();
        since = now();
      }
    }
    if (!reader.isAtEnd) {
      throw new Error(`the column "${name}" goes on after ${count} rows`);
    }
    done += 1;
    return target;
  }

  const joints: Float64Array[] = [];
  for (let i = 0; i < data.axes.length; ++i) {
    joints.push(await numbers(`joint${i}`));
  }
  return {
    count,
    axes: data.axes,
    joints,
    position: [await numbers('x'), await numbers('y'), await numbers('z')],
    direction: [await numbers('i'), await numbers('j'), await numbers('k')],
    point: await numbers('point'),
    line: await numbers('line'),
    flags: Uint8Array.from(await numbers('flags')),
    branch: await numbers('branch'),
    positionError: await numbers('positionError'),
    directionError: await numbers('directionError'),
    feed: await numbers('feed'),
    decimals,
  };
}
