/// Columns of numbers as the program packs them: whole numbers, each as its difference from the one
/// before, zigzag, seven bits a byte with the low ones first, base64.

import type { PackedColumn } from './contract.ts';

const ALPHABET = 'ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/';
const NO_LETTER = 0x40;
const SIX_BITS = (() => {
  const table = new Uint8Array(0x10000).fill(NO_LETTER); // by UTF-16 code unit
  [...ALPHABET].forEach((letter, index) => (table[letter.charCodeAt(0)] = index));
  return table;
})();

export function bytesOfBase64(text: string): Uint8Array {
  let length = text.length;
  while (length > 0 && text.charCodeAt(length - 1) === 0x3d) {
    length -= 1;
  }
  const bytes = new Uint8Array(Math.floor((length * 3) / 4));
  let all = 0;
  let out = 0;
  for (let i = 0; i < length; i += 4) {
    const a = SIX_BITS[text.charCodeAt(i)]!;
    const b = SIX_BITS[text.charCodeAt(i + 1)]!;
    const c = i + 2 < length ? SIX_BITS[text.charCodeAt(i + 2)]! : 0;
    const d = i + 3 < length ? SIX_BITS[text.charCodeAt(i + 3)]! : 0;
    all |= a | b | c | d;
    // What would stand beyond the end of the array is dropped.
    bytes[out] = (a << 2) | (b >> 4);
    bytes[out + 1] = (b << 4) | (c >> 2);
    bytes[out + 2] = (c << 6) | d;
    out += 3;
  }
  if (all >= NO_LETTER) {
    const at = [...text].findIndex((letter, i) => i < length && !ALPHABET.includes(letter));
    throw new Error(`base64: character ${at + 1} is none of its letters`);
  }
  return bytes;
}

const BITS_OF_SMALL = 28; // four bytes of seven bits, which bit operations take

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
  read(target: Float64Array, begin: number, end: number): void {
    const { bytes, scale } = this;
    let at = this.at;
    let whole = this.whole;
    for (let row = begin; row < end; ++row) {
      let byte = bytes[at++];
      let small = byte! & 0x7f;
      let shift = 7;
      while (byte! >= 0x80 && shift < BITS_OF_SMALL) {
        byte = bytes[at++];
        small |= (byte! & 0x7f) << shift;
        shift += 7;
      }
      if (byte! < 0x80) {
        whole += (small >>> 1) ^ -(small & 1);
      } else {
        // A difference may have 53 bits, bit operations have 32.
        let large = small;
        while (byte! >= 0x80) {
          byte = bytes[at++];
          large += (byte! & 0x7f) * 2 ** shift;
          shift += 7;
        }
        whole += large % 2 === 0 ? large / 2 : -(large + 1) / 2;
      }
      if (at > bytes.length) {
        throw new Error(`a column ends after ${row} rows`);
      }
      target[row] = whole / scale;
    }
    this.at = at;
    this.whole = whole;
  }
}
