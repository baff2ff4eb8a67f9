/// How events are told apart: a shape, even without its colour, and words.

import type { EventKind } from '../data/contract.ts';
import { svgIcon } from './dom.ts';

/// Paths about the origin, five units to each side.
export const EVENT_SHAPES: Readonly<Record<EventKind, string>> = {
  failed: 'M-5-3-3-5 0-2 3-5 5-3 2 0 5 3 3 5 0 2-3 5-5 3-2 0Z',
  limit: 'M-4.2-4.2h8.4v8.4h-8.4Z',
  pole: 'M0-4.8A4.8 4.8 0 1 1 0 4.8 4.8 4.8 0 1 1 0-4.8Z',
  flip: 'M0-5 5 4.2-5 4.2Z',
  rewind: 'M0-5.4 5.4 0 0 5.4-5.4 0Z',
};

export const EVENT_TITLES: Readonly<Record<EventKind, string>> = {
  failed: 'not reached',
  limit: 'at a limit',
  pole: 'at the pole',
  flip: 'change of branch',
  rewind: 'turned back',
};

export function eventIcon(kind: EventKind): SVGSVGElement {
  return svgIcon('-6 -6 12 12', `icon event-${kind}`, EVENT_SHAPES[kind]);
}
