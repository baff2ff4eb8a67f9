import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { EventData } from '../../src/data/contract.ts';
import type { Rows } from '../../src/data/rows.ts';
import { byRow, neighbour } from '../../src/motion/events.ts';
import { nominalRates, nominalTimes } from '../../src/motion/nominalTime.ts';
import { Playback, SPEEDS, fittingSpeed, placeAt, timeAt } from '../../src/motion/playback.ts';
import { lastNotAbove, lowerBound } from '../../src/motion/search.ts';
import { Timeline } from '../../src/motion/Timeline.ts';
import { axis } from '../support/machines.ts';

const zeros = (count: number): Float64Array => new Float64Array(count);

function rowsOf(joints: number[][], x: number[], flags: number[], feed: number[]): Rows {
  const count = x.length;
  return {
    count,
    axes: joints.map((_, k) => k),
    joints: joints.map((values) => Float64Array.from(values)),
    position: [Float64Array.from(x), zeros(count), zeros(count)],
    direction: [zeros(count), zeros(count), zeros(count)],
    point: zeros(count),
    line: zeros(count),
    flags: Uint8Array.from(flags),
    branch: zeros(count),
    positionError: zeros(count),
    directionError: zeros(count),
    feed: Float64Array.from(feed),
    decimals: {},
  };
}

test('times follow the feed, rapids the slowest axis at its nominal rate', () => {
  const axes = [axis('X', -1, 'linear', [1, 0, 0]), axis('C', -1, 'rotary', [0, 0, 1])];
  const rows = rowsOf(
    [
      [0, 10, 10, 1010],
      [0, 0, 60, 60],
    ],
    [0, 10, 10, 1010],
    [0, 0, 0, 1],
    [600, 600, 600, 600],
  );
  // 10 mm at 600 mm/min are 1 s; 60 degrees at 7200 deg/min, for the tool stands still, 0.5 s; the
  // rapid of 1000 mm at 10000 mm/min 6 s.
  const times = nominalTimes(rows, axes, nominalRates('mm'));
  assert.deepEqual(
    [...times].map((time) => Number(time.toFixed(9))),
    [0, 1, 1.5, 7.5],
  );
});

test('without a feed the tool goes at a nominal one', () => {
  const rows = rowsOf([[0, 1]], [0, 1], [0, 0], [0, 0]);
  const times = nominalTimes(rows, [axis('X', -1, 'linear', [1, 0, 0])], nominalRates('in'));
  assert.equal(times[1], 60 / 40); // 1 inch at 40 inches a minute
});

test('bounds in ascending numbers, of which some are equal', () => {
  const numbers = [1, 3, 3, 5];
  assert.deepEqual(
    [0, 1, 3, 4, 6].map((x) => lowerBound(numbers, x)),
    [0, 0, 1, 3, 4],
  );
  assert.deepEqual(
    [0, 1, 3, 4, 6].map((x) => lastNotAbove(numbers, x)),
    [-1, 0, 2, 2, 3],
  );
});

test('places between rows and times are each other’s inverse', () => {
  const times = Float64Array.of(0, 2, 2, 6);
  assert.equal(placeAt(times, 0.5), 0.25);
  assert.equal(placeAt(times, 2), 2); // the later of two rows at one time
  assert.equal(placeAt(times, 5), 2.75);
  assert.equal(placeAt(times, 99), 3);
  assert.equal(placeAt(times, -1), 0);
  assert.equal(timeAt(times, 2.75), 5);
  assert.equal(timeAt(times, 3), 6);
});

test('playing follows the clock and its speed, and stops at the end', () => {
  const shown: number[] = [];
  let changes = 0;
  const playback = new Playback(
    Float64Array.of(0, 1, 2, 3),
    (place) => shown.push(place),
    () => (changes += 1),
  );
  playback.frame(0);
  assert.deepEqual(shown, []); // it does not play by itself
  playback.play(1);
  playback.frame(1000); // the clock starts with the first frame
  playback.frame(1500);
  playback.speed = 2;
  playback.frame(2000);
  playback.frame(9000);
  assert.deepEqual(shown, [1, 1.5, 2.5, 3]);
  assert.equal(playback.isPlaying, false);
  assert.equal(changes, 2);
  playback.play(3); // from the end it begins again
  playback.frame(0);
  assert.equal(shown.at(-1), 0);
});

test('the speed goes through its steps and stays within them', () => {
  assert.equal(fittingSpeed(30), 1);
  assert.equal(fittingSpeed(100), 2);
  assert.equal(fittingSpeed(1e9), 1000);
  const playback = new Playback(
    Float64Array.of(0, 1),
    () => {},
    () => {},
  );
  playback.faster(1);
  assert.equal(playback.speed, 2);
  playback.faster(-100);
  assert.equal(playback.speed, SPEEDS[0]);
});

test('events before and behind a row', () => {
  const event = (row: number): EventData => ({ kind: 'pole', point: 0, line: row, row, sentence: '' });
  const events = byRow([event(9), event(2), event(5)]);
  assert.deepEqual(
    events.map(({ row }) => row),
    [2, 5, 9],
  );
  assert.equal(neighbour(events, 5, 1)?.row, 9);
  assert.equal(neighbour(events, 5, -1)?.row, 2);
  assert.equal(neighbour(events, 4, 1)?.row, 5);
  assert.equal(neighbour(events, 9, 1), undefined);
  assert.equal(neighbour(events, 2, -1), undefined);
});

test('the row under the pointer is shown, the chosen one remembered', () => {
  const timeline = new Timeline({ rowCount: 10, times: zeros(10) });
  let told = 0;
  timeline.subscribe(() => (told += 1));
  timeline.goTo(4.5);
  timeline.setHover(7);
  timeline.setHover(7);
  assert.deepEqual([timeline.row, timeline.shownRow, timeline.shownPlace, told], [4, 7, 7, 2]);
  timeline.setHover(null);
  assert.deepEqual([timeline.shownRow, timeline.shownPlace], [4, 4.5]);
  timeline.setHover(7);
  timeline.goTo(99);
  assert.deepEqual([timeline.row, timeline.shownRow], [9, 9]); // the pointer has to move again
  timeline.goTo(-3);
  assert.equal(timeline.row, 0);
  timeline.setHover(40);
  assert.equal(timeline.shownRow, 9);
});
