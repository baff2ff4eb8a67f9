import type { AxisData, MachineData, Triple } from '../../src/data/contract.ts';

export function axis(
  name: string,
  parent: number,
  type: 'linear' | 'rotary',
  direction: Triple,
  point: Triple = [0, 0, 0],
  limits: AxisData['limits'] = [-100, 100],
): AxisData {
  return { name, parent, type, direction, point, limits, initial: 0, word: name, wordSign: 1 };
}

/// Tool: base - Z. Part: base - A, which tilts about x, 100 below zero - C, which turns about z.
export const TRUNNION: MachineData = {
  name: 'trunnion',
  file: 'trunnion.toml',
  sha256: '0'.repeat(64),
  lengthUnit: 'mm',
  axes: [
    axis('C', 1, 'rotary', [0, 0, 1], [0, 0, -100], [null, null]), // before what carries it
    axis('A', -1, 'rotary', [1, 0, 0], [0, 0, -100]),
    axis('Z', -1, 'linear', [0, 0, 1]),
  ],
  mounts: [
    { name: 'spindle', kind: 'tool', parent: 2, origin: [0, 0, 0], zAxis: [0, 0, 1], xAxis: [1, 0, 0] },
    { name: 'table', kind: 'part', parent: 0, origin: [0, 0, -80], zAxis: [0, 0, 1], xAxis: [1, 0, 0] },
  ],
  streams: [{ id: 1, tool: 'spindle', part: 'table' }],
  visuals: null,
};
