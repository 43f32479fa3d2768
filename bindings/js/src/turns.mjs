// Work whose first half runs side by side, and whose second half in the order in which it was asked for.

const AHEAD = 16;  // that are read while others wait to be written

export class Turns {
  #ends = [];  // of those that are under way

  /** What write makes of what read gives, when all that came before is done. */
  async take(read, write) {
    const before = this.#ends.at(-1);
    let end;
    this.#ends.push(new Promise((resolve) => { end = resolve; }));
    const start = this.#ends.length > AHEAD ? this.#ends.shift() : undefined;
    try {
      await start;
      const data = await read();
      await before;
      return write(data);
    } finally {
      await before;
      end();
    }
  }
}
