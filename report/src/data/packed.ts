/// Columns of numbers as the program packs them: whole numbers, each as its difference from the one
/// before, zigzag, seven bits a byte with the low ones first, base64.

import type { PackedColumn } from './contract.ts';

const ALPHABET = 'ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/';
const SIX_BITS = (() => {
  const table = new Uint8Array(128).fill(255);
  [...ALPHABET].forEach((letter, index) => (table[letter.charCodeAt(0)] = index));
  return table;
})();

function sixBits(text: string, index: number): number {
  const code = text.charCodeAt(index);
  const bits = code < 128 ? SIX_BITS[code]! : 255;
  if (bits === 255) {
    throw new Error(`base64: character ${index + 1} is none of its letters`);
  }
  return bits;
}

export function bytesOfBase64(text: string): Uint8Array {
  let length = text.length;
  while (length > 0 && text.charCodeAt(length - 1) === 0x3d) {
    length -= 1;
  }
  const bytes = new Uint8Array(Math.floor((length * 3) / 4));
  let out = 0;
  for (let i = 0; i < length; i += 4) {
    const a = sixBits(text, i);
    const b = i + 1 < length ? sixBits(text, i + 1) : 0;
    const c = i + 2 < length ? sixBits(text, i + 2) : 0;
    const d = i + 3 < length ? sixBits(text, i + 3) : 0;
    // Writes beyond the end of a typed array are dropped.
    bytes[out] = (a << 2) | (b >> 4);
    bytes[out + 1] = (b << 4) | (c >> 2);
    bytes[out + 2] = (c << 6) | d;
    out += 3;
  }
  return bytes;
}

const LAST_32_BIT_SHIFT = 21; // three bytes and this one still fit into 28 bits

/// Reads one number after the other, and can pause between them.
export class PackedReader {
  private readonly bytes: Uint8Array;
  private readonly scale: number;
  private at = 0;
  private whole = 0;

  constructor(column: PackedColumn) {
    this.bytes = bytesOfBase64(column.data);
    this.scale = 10 ** column.decimals;
  }

  get isAtEnd(): boolean {
    return this.at === this.bytes.length;
  }

  /// The next numbers into `target`, from index `begin` up to `end`.
  read(target: Float64Array | Uint8Array, begin: number, end: number): void {
    const { bytes, scale } = this;
    let at = this.at;
    let whole = this.whole;
    for (let row = begin; row < end; ++row) {
      let zigzag = 0;
      let shift = 0;
      let byte = 0x80;
      while (byte >= 0x80) {
        if (at === bytes.length) {
          throw new Error(`a column ends after ${row} rows`);
        }
        byte = bytes[at]!;
        at += 1;
        // Bit operations have 32 bits; a difference may have 53.
        zigzag =
          shift <= LAST_32_BIT_SHIFT
            ? zigzag | ((byte & 0x7f) << shift)
            : zigzag + (byte & 0x7f) * 2 ** shift;
        shift += 7;
      }
      whole += zigzag % 2 === 0 ? zigzag / 2 : -(zigzag + 1) / 2;
      target[row] = whole / scale;
    }
    this.at = at;
    this.whole = whole;
  }
}
