import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { PackedColumn } from '../../src/data/contract.ts';
import { PackedReader, bytesOfBase64 } from '../../src/data/packed.ts';
import { decodeRows } from '../../src/data/rows.ts';

function column(bytes: readonly number[], decimals = 0): PackedColumn {
  return { decimals, data: Buffer.from(bytes).toString('base64') };
}

function numbers(packed: PackedColumn, count: number): number[] {
  const values = new Float64Array(count);
  new PackedReader(packed).read(values, 0, count);
  return [...values];
}

test('base64 of one, two and three bytes, with and without what fills it up', () => {
  // RFC 4648: "f", "fo", "foo"
  assert.deepEqual([...bytesOfBase64('Zg==')], [0x66]);
  assert.deepEqual([...bytesOfBase64('Zm8=')], [0x66, 0x6f]);
  assert.deepEqual([...bytesOfBase64('Zm8')], [0x66, 0x6f]);
  assert.deepEqual([...bytesOfBase64('Zm9v')], [0x66, 0x6f, 0x6f]);
  assert.deepEqual([...bytesOfBase64('')], []);
});

test('a letter that base64 does not have is refused', () => {
  assert.throws(() => bytesOfBase64('Zm9*'), /character 4 is none/);
  assert.throws(() => bytesOfBase64('Zm\u20ac='), /character 3 is none/);
});

test('differences of either sign add up', () => {
  // 1, 0, -1, 1: the differences 1, -1, -1, 2 are 2, 1, 1, 4 in zigzag.
  assert.deepEqual(numbers(column([2, 1, 1, 4]), 4), [1, 0, -1, 1]);
});

test('numbers of two bytes: 150 is 300 in zigzag, 0b10_0101100, low seven bits first', () => {
  assert.deepEqual(numbers(column([0xac, 0x02]), 1), [150]);
  // -151 is 2 * 151 - 1 = 301.
  assert.deepEqual(numbers(column([0xad, 0x02]), 1), [-151]);
});

test('decimals move the point', () => {
  // 12345 is 24690 in zigzag: 24690 = 1 * 16384 + 64 * 128 + 114
  assert.deepEqual(numbers(column([0x80 | 114, 0x80 | 64, 1], 3), 1), [12.345]);
});

test('numbers around 2^28, where whole bytes pass 28 bits', () => {
  // 2^27 is 2^28 in zigzag: a one behind four groups of seven bits. 2^27 - 1 is 2^28 - 2.
  assert.deepEqual(numbers(column([0x80, 0x80, 0x80, 0x80, 0x01]), 1), [2 ** 27]);
  assert.deepEqual(numbers(column([0xfe, 0xff, 0xff, 0x7f]), 1), [2 ** 27 - 1]);
});

test('numbers beyond 32 bits', () => {
  // 2^32 is 2^33 in zigzag: 4 * 7 = 28 bits of zeros, and 2^5 in the fifth byte.
  assert.deepEqual(numbers(column([0x80, 0x80, 0x80, 0x80, 0x20]), 1), [2 ** 32]);
  // -(2^32) - 1 is 2^33 + 1.
  assert.deepEqual(numbers(column([0x81, 0x80, 0x80, 0x80, 0x20]), 1), [-(2 ** 32) - 1]);
  // 2^52 - 1 is 2^53 - 2 in zigzag: 53 ones but for the lowest, seven groups of seven and four more.
  const bytes = [0xfe, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x0f];
  assert.deepEqual(numbers(column(bytes), 1), [2 ** 52 - 1]);
});

test('a sum of differences may pass 32 bits where none of them does', () => {
  // 2^31 three times: 2^32 in zigzag, 28 bits of zeros and 2^4.
  const step = [0x80, 0x80, 0x80, 0x80, 0x10];
  assert.deepEqual(numbers(column([...step, ...step, ...step]), 3), [2 ** 31, 2 ** 32, 3 * 2 ** 31]);
});

test('reading goes on where it paused', () => {
  const values = new Float64Array(4);
  const reader = new PackedReader(column([2, 2, 2, 2]));
  reader.read(values, 0, 2);
  assert.equal(reader.isAtEnd, false);
  reader.read(values, 2, 4);
  assert.deepEqual([...values], [1, 2, 3, 4]);
  assert.equal(reader.isAtEnd, true);
});

test('a column that ends too early is refused', () => {
  assert.throws(() => numbers(column([2, 2]), 3), /ends after 2 rows/);
  assert.throws(() => numbers(column([0x80]), 1), /ends after 0 rows/);
});

const NAMES = [
  'joint0',
  'x',
  'y',
  'z',
  'i',
  'j',
  'k',
  'point',
  'line',
  'flags',
  'branch',
  'positionError',
  'directionError',
  'feed',
];

function rowsOf(bytes: readonly number[], count: number) {
  return { count, axes: [3], columns: Object.fromEntries(NAMES.map((name) => [name, column(bytes)])) };
}

test('rows: all columns, in slices with pauses between them', async () => {
  const count = 120_000;
  let pauses = 0;
  let clock = 0;
  const shares: number[] = [];
  const rows = await decodeRows(
    rowsOf(new Array<number>(count).fill(2), count),
    (share) => shares.push(share),
    async () => {
      pauses += 1;
    },
    () => (clock += 15), // a slice may take 24 ms
  );
  assert.equal(rows.count, count);
  assert.deepEqual(rows.axes, [3]);
  assert.equal(rows.joints[0]![count - 1], count);
  assert.equal(rows.position[2][99_999], 100_000);
  assert.equal(rows.flags[2], 3);
  // The clock is read once a slice and once more behind a pause, so that every second slice pauses: there
  // are three for each of the 14 columns.
  assert.equal(pauses, 21);
  assert.equal(shares.length, pauses);
  assert.deepEqual(
    shares,
    [...shares].sort((a, b) => a - b),
  );
});

test('rows: a column that is missing or too long is named', async () => {
  const rows = rowsOf([2, 2], 2);
  const { feed: _, ...columns } = rows.columns;
  await assert.rejects(decodeRows({ ...rows, columns }), /"feed" is missing/);
  await assert.rejects(decodeRows({ ...rows, count: 1 }), /"joint0" goes on after 1 rows/);
});
