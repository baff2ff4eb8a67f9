/// Runs as long as wanted, made up from a real one.

import type { ReportData } from '../../src/data/contract.ts';
import { pack } from './samples.ts';

/// A wave on the machine of `report`, whose rows are five joints and the tool.
export function longRun(report: ReportData, count: number): ReportData {
  const run = report.run!;
  const turns = Float64Array.from({ length: count }, (_, row) => row * 3.6);
  const wave = (scale: number, speed: number): Float64Array =>
    turns.map((degrees) => scale * Math.sin((degrees * speed * Math.PI) / 180));
  const rest = new Float64Array(count);
  const made: Readonly<Record<string, Float64Array>> = {
    joint0: wave(50, 1),
    joint1: wave(50, 0.3),
    joint2: wave(40, 0.001).map((z) => z - 200),
    joint3: wave(30, 0.01),
    joint4: turns,
    x: wave(50, 1),
    y: wave(50, 0.3),
    z: wave(40, 0.001),
    i: rest,
    j: wave(0.2, 0.1),
    k: wave(0.1, 0.1).map((k) => 1 - k * k),
    point: Float64Array.from(rest, (_, row) => row),
    line: Float64Array.from(rest, (_, row) => row + 5),
    flags: Float64Array.from(rest, (_, row) => (row % 5000 < 40 ? 1 : 0)),
    branch: rest.map(() => 2),
    positionError: wave(1e-9, 7),
    directionError: wave(1e-9, 5),
    feed: rest.map(() => 1000),
  };
  const { columns } = run.rows;
  const packed = Object.fromEntries(
    Object.entries(columns).map(([name, { decimals }]) => [name, pack(made[name]!, decimals)]),
  );
  return {
    ...report,
    run: {
      ...run,
      counts: { ...run.counts, points: count, converged: count, rows: count, inserted: 0 },
      events: [],
      operations: [run.operations[0]!],
      rows: { ...run.rows, count, columns: packed },
    },
  };
}
