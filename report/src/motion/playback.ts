/// Plays along the nominal time.

import { lastNotAbove } from './search.ts';

export const SPEEDS = [0.1, 0.25, 0.5, 1, 2, 5, 10, 25, 50, 100, 250, 1000];

/// The speed at which a whole run takes about a minute and a half, not below life size.
export function fittingSpeed(seconds: number): number {
  return SPEEDS.find((speed) => speed >= 1 && seconds / speed <= 90) ?? SPEEDS.at(-1)!;
}

/// The row before a time, and the share of the way to the next.
export function placeAt(times: Float64Array, seconds: number): number {
  const last = times.length - 1;
  const row = Math.min(Math.max(lastNotAbove(times, seconds), 0), last);
  if (row === last) {
    return last;
  }
  const gap = times[row + 1]! - times[row]!;
  return gap > 0 ? row + Math.min(Math.max((seconds - times[row]!) / gap, 0), 1) : row;
}

export function timeAt(times: Float64Array, place: number): number {
  const row = Math.floor(place);
  const share = place - row;
  return share > 0 ? times[row]! + (times[row + 1]! - times[row]!) * share : times[row]!;
}

export class Playback {
  private seconds = 0;
  private last: number | null = null;
  private running = false;
  speed: number;

  constructor(
    private readonly times: Float64Array,
    private readonly show: (place: number) => void,
    private readonly changed: () => void,
  ) {
    this.speed = fittingSpeed(times.at(-1) ?? 0);
  }

  get isPlaying(): boolean {
    return this.running;
  }

  /// From the place given; from the beginning where that is the end.
  play(place: number): void {
    this.seconds = place >= this.times.length - 1 ? 0 : timeAt(this.times, place);
    this.last = null;
    this.running = true;
    this.changed();
  }

  pause(): void {
    if (this.running) {
      this.running = false;
      this.changed();
    }
  }

  /// To be called for each frame, with its time [ms].
  frame(now: number): void {
    if (!this.running) {
      return;
    }
    const elapsed = this.last === null ? 0 : (now - this.last) / 1000;
    this.last = now;
    this.seconds += elapsed * this.speed;
    this.show(placeAt(this.times, this.seconds));
    if (this.seconds >= this.times.at(-1)!) {
      this.pause();
    }
  }

  faster(steps: number): void {
    const index = SPEEDS.indexOf(this.speed);
    this.speed = SPEEDS[Math.min(Math.max(index + steps, 0), SPEEDS.length - 1)]!;
    this.changed();
  }
}
