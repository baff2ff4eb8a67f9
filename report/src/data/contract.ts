/// What the program writes into the page. Lengths are in the machine's unit, angles in degrees, and all
/// geometry is in machine coordinates with every axis at zero.

export type Triple = readonly [number, number, number];
export type Range = readonly [number, number];

export interface AxisData {
  readonly name: string;
  readonly parent: number; // index of the axis whose body carries it; -1: the base
  readonly type: 'linear' | 'rotary';
  readonly direction: Triple; // of its body's motion for a positive value
  readonly point: Triple; // on a rotary axis
  readonly limits: readonly [number | null, number | null];
  readonly initial: number;
  readonly word: string;
  readonly wordSign: number;
}

export interface MountData {
  readonly name: string;
  readonly kind: 'tool' | 'part';
  readonly parent: number;
  readonly origin: Triple;
  readonly zAxis: Triple;
  readonly xAxis: Triple;
}

export interface StreamData {
  readonly id: number;
  readonly tool: string;
  readonly part: string;
}

export interface VisualData {
  readonly parent: number;
  readonly name: string;
  readonly shape: 'box' | 'cylinder' | 'sphere';
  readonly size: readonly number[];
  readonly origin: Triple;
  readonly xAxis: Triple;
  readonly zAxis: Triple;
  readonly color: readonly [number, number, number, number] | null;
}

export interface MachineData {
  readonly name: string;
  readonly file: string;
  readonly sha256: string;
  readonly lengthUnit: string;
  readonly axes: readonly AxisData[];
  readonly mounts: readonly MountData[];
  readonly streams: readonly StreamData[];
  readonly visuals: readonly VisualData[] | null;
}

export interface PackedColumn {
  readonly decimals: number;
  readonly data: string;
}

export interface RowsData {
  readonly count: number;
  readonly axes: readonly number[];
  readonly columns: Readonly<Record<string, PackedColumn>>;
}

export const EVENT_KINDS = ['failed', 'limit', 'pole', 'flip', 'rewind'] as const;
export type EventKind = (typeof EVENT_KINDS)[number];

export interface EventData {
  readonly kind: EventKind;
  readonly point: number;
  readonly line: number;
  readonly row: number;
  readonly sentence: string;
}

export interface OperationData {
  readonly name: string;
  readonly line: number;
  readonly firstRow: number;
  readonly stream: number;
  readonly toolNumber: number | null;
  readonly toolLength: number;
}

export interface WorstError {
  readonly value: number;
  readonly line: number;
}

export interface RunData {
  readonly toolpath: { readonly file: string; readonly sha256: string };
  readonly command: readonly string[];
  readonly seconds: number;
  readonly options: readonly { readonly name: string; readonly value: unknown }[];
  readonly outputs: readonly { readonly kind: string; readonly path: string }[];
  readonly counts: {
    readonly points: number;
    readonly converged: number;
    readonly failed: number;
    readonly rows: number;
    readonly inserted: number;
  };
  readonly worstPosition: WorstError | null;
  readonly worstDirection: WorstError | null;
  readonly ranges: readonly { readonly axis: number; readonly reached: Range | null }[];
  readonly operations: readonly OperationData[];
  readonly events: readonly EventData[];
  readonly rows: RowsData;
}

export interface ReportData {
  readonly format: number;
  readonly kind: 'run' | 'machine';
  readonly version: string;
  readonly machine: MachineData;
  readonly run: RunData | null;
}

export const FORMAT = 1;

/// Of the column "flags", which is a sum of these.
export const Flag = {
  rapid: 1,
  failed: 2,
  inserted: 4,
  flip: 8,
  rewind: 16,
  pole: 32,
  limit: 64,
} as const;

export const FLAG_NAMES = Object.keys(Flag) as (keyof typeof Flag)[];

export function flagText(flags: number): string {
  return FLAG_NAMES.filter((name) => (flags & Flag[name]) !== 0).join(' ');
}
