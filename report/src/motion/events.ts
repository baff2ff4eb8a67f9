import type { EventData } from '../data/contract.ts';

/// In the order of their rows, those of one row in the order given.
export function byRow(events: readonly EventData[]): EventData[] {
  return [...events].sort((a, b) => a.row - b.row);
}

/// The event whose row comes next after `row`, or before it for a step of -1.
export function neighbour(ordered: readonly EventData[], row: number, step: 1 | -1): EventData | undefined {
  return step === 1 ? ordered.find((event) => event.row > row) : ordered.findLast((event) => event.row < row);
}
