import assert from 'node:assert/strict';
import { test } from 'node:test';
import { decimate, flaggedSpans, pixelBounds } from '../../src/plot/decimate.ts';

const rows = (count: number): Float64Array => Float64Array.from({ length: count }, (_, i) => i);

test('pixels share the rows, and the edges have one more on either side', () => {
  // Rows 0 to 9, of which 2 to 6 are in sight, over two pixels of two units each: 2, 3 and 4, 5, and 6
  // on the edge; the neighbours 1 and 7 lead to and from there.
  assert.deepEqual([...pixelBounds(rows(10), 2, 6, 2)], [1, 4, 8]);
  assert.deepEqual([...pixelBounds(rows(10), 0, 9, 3)], [0, 3, 6, 10]);
});

test('of each pixel the first, the lowest, the highest and the last remain, in their order', () => {
  const x = rows(8);
  const y = Float64Array.of(5, 9, 1, 4, 0, 0, 0, 7);
  const kept = decimate(x, y, Uint32Array.of(0, 4, 8));
  assert.deepEqual(kept.x, [0, 1, 2, 3, 4, 7]);
  assert.deepEqual(kept.y, [5, 9, 1, 4, 0, 7]);
});

test('a single peak among a million rows is not lost', () => {
  const count = 1_000_000;
  const y = new Float64Array(count);
  y[654_321] = 1;
  y[123_456] = -1;
  const x = rows(count);
  const kept = decimate(x, y, pixelBounds(x, 0, count - 1, 500));
  assert.ok(kept.x.length <= 2000);
  assert.equal(kept.y[kept.x.indexOf(654_321)], 1);
  assert.equal(kept.y[kept.x.indexOf(123_456)], -1);
  assert.equal(
    kept.y.reduce((sum, value) => sum + value, 0),
    0,
  );
});

test('rows at the same x are all looked at', () => {
  const x = Float64Array.of(0, 1, 1, 1, 2);
  const y = Float64Array.of(0, 3, -3, 1, 0);
  const kept = decimate(x, y, pixelBounds(x, 0, 2, 2));
  assert.deepEqual(kept.y, [0, 3, -3, 0]); // the pixel of 1 to 2: 3, -3, and 0 last
});

test('a flag counts for the way that leads to its row', () => {
  const flags = Uint8Array.of(0, 1, 1, 0, 0, 3, 0, 0);
  const all = pixelBounds(rows(8), 0, 7, 100);
  assert.deepEqual(flaggedSpans(rows(8), flags, 1, all), [0, 2, 4, 5]);
  assert.deepEqual(flaggedSpans(rows(8), flags, 2, all), [4, 5]);
  assert.deepEqual(flaggedSpans(rows(8), flags, 4, all), []);
});

test('spans that lie less than a pixel apart are one', () => {
  const flags = Uint8Array.from({ length: 1000 }, (_, row) => row % 2);
  const spans = flaggedSpans(rows(1000), flags, 1, pixelBounds(rows(1000), 0, 999, 10));
  assert.deepEqual(spans, [0, 999]);
});
