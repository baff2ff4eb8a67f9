/// The first index whose value is not below `wanted`; the length where there is none.
export function lowerBound(ascending: ArrayLike<number>, wanted: number): number {
  let low = 0;
  let high = ascending.length;
  while (low < high) {
    const middle = (low + high) >>> 1;
    if (ascending[middle]! < wanted) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

/// The last index whose value is not above `wanted`; -1 where there is none.
export function lastNotAbove(ascending: ArrayLike<number>, wanted: number): number {
  let low = 0;
  let high = ascending.length;
  while (low < high) {
    const middle = (low + high) >>> 1;
    if (ascending[middle]! <= wanted) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low - 1;
}
