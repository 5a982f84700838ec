// SPDX-License-Identifier: MIT
// Decodes the statements of ISDB captions and superimposed texts (ARIB STD-B24) to characters at places of a plane.
import { symbols } from "./arib-symbols.js";

const planes = { 5: [1920, 1080], 7: [960, 540], 9: [720, 480], 11: [1280, 720] }; // by the number of the writing format
const mostGlyphs = 2000; // a plane has room for fewer
const unitSeparator = 0x1f, textUnit = 0x20, singleByteGlyphs = 0x30, doubleByteGlyphs = 0x31;

// Code sets by the byte that designates them.
const kanji = { bytes: 2, char: (high, low) => symbols[high] ? [...symbols[high]][low - 0x21] ?? " " : japanese(high, low) };
const letters = { bytes: 1, char: code => code === 0x5c ? "¥" : code === 0x7e ? "‾" : String.fromCharCode(code) };
const hiragana = { bytes: 1, char: code => code >= 0x77 ? "ゝゞー。「」、・"[code - 0x77] : japanese(0x24, code) };
const katakana = { bytes: 1, char: code => code >= 0x77 ? "ヽヾー。「」、・"[code - 0x77] : japanese(0x25, code) };
const halfWidth = { bytes: 1, char: code => String.fromCharCode(0xff61 + code - 0x21) };
const latin = { bytes: 1, char: code => new TextDecoder("iso-8859-15").decode(Uint8Array.of(code | 0x80)) };
const blank = { bytes: 1, char: () => " " }; // mosaics
const macros = { bytes: 1, isMacro: true };
const sets = { 0x42: kanji, 0x39: kanji, 0x3a: kanji, 0x3b: kanji, 0x4a: letters, 0x36: letters, 0x30: hiragana,
  0x37: hiragana, 0x31: katakana, 0x38: katakana, 0x49: halfWidth, 0x4b: latin };
const glyphSet = final => final === 0x70 ? macros : { bytes: final === 0x40 ? 2 : 1, glyphs: final };

// What the macros 0x60 to 0x6f designate as G0 to G2: bytes as above, those of glyph sets negative.
const defaultMacros = [[0x42, 0x4a, 0x30], [0x42, 0x31, 0x30], [0x42, -0x41, 0x30], [0x32, 0x34, 0x35], [0x32, 0x33, 0x35],
  [0x32, -0x41, 0x35], [-0x41, -0x42, -0x43], [-0x44, -0x45, -0x46], [-0x47, -0x48, -0x49], [-0x4a, -0x4b, -0x4c],
  [-0x4d, -0x4e, -0x4f], [0x42, -0x42, 0x30], [0x42, -0x43, 0x30], [0x42, -0x44, 0x30], [0x31, 0x30, 0x4a], [0x4a, 0x32, -0x41]];

const eucJp = new TextDecoder("euc-jp");
const japanese = (high, low) => eucJp.decode(Uint8Array.of(high | 0x80, low | 0x80));

const colour = (red, green, blue, opacity = 1) => `rgb(${red} ${green} ${blue} / ${opacity})`;

/** The 128 colours: strong ones, transparent, dark ones, mixtures, and all of them half transparent. */
const colours = (() => {
  const bits = [0, 1, 2, 3, 4, 5, 6, 7].map(i => [i & 1, i >> 1 & 1, i >> 2 & 1]);
  const opaque = [...bits.map(bit => bit.map(one => one * 255)), null, ...bits.slice(1).map(bit => bit.map(one => one * 170))];
  const levels = [0, 85, 170, 255];
  for (const rgb of levels.flatMap(red => levels.flatMap(green => levels.map(blue => [red, green, blue])))) {
    if (!opaque.some(known => String(known) === String(rgb))) {
      opaque.push(rgb);
    }
  }
  return [...opaque.map(rgb => rgb ? colour(...rgb) : null), ...opaque.filter(Boolean).map(rgb => colour(...rgb, 0.5))];
})();

/** One stream of captions. `glyphs` are those on the plane: place and size of the character's cell and of the character,
 *  which is a text or a bitmap. */
export class CaptionDecoder {
  constructor() {
    this.patterns = new Map(); // characters that the stream has defined
    this.glyphs = [];
    this.begin(7);
    [this.x0, this.y0, this.areaWidth, this.areaHeight] = [170, 30, 620, 480];
  }

  /** Works off a statement, the data of a data group. Yields the seconds to wait before it goes on. */
  *run(data) {
    const hasTime = data[0] >> 6 === 1 || data[0] >> 6 === 2;
    let at = (hasTime ? 6 : 1) + 3;
    this.designate([0x42, 0x4a, 0x30]);
    while (at + 5 <= data.length && data[at] === unitSeparator) {
      const size = data[at + 2] << 16 | data[at + 3] << 8 | data[at + 4];
      const unit = data.subarray(at + 5, at + 5 + size);
      if (data[at + 1] === textUnit) {
        yield* this.text(unit);
      } else if (data[at + 1] === singleByteGlyphs || data[at + 1] === doubleByteGlyphs) {
        this.define(unit, data[at + 1] === doubleByteGlyphs);
      }
      at += 5 + size;
    }
  }

  get string() {
    return this.glyphs.map(glyph => glyph.char ?? "").join("");
  }

  begin(format) {
    [this.width, this.height] = planes[format & 1 ? format : format - 1] ?? [960, 540];
    [this.x0, this.y0, this.areaWidth, this.areaHeight] = [0, 0, this.width, this.height];
    this.font = [36, 36];
    this.space = [4, 24];
    this.scale = [1, 1];
    this.palette = 0;
    this.foreground = colours[7];
    this.background = null;
    this.repeat = 1;
    this.home();
  }

  designate(finals) {
    this.g = [...finals.map(final => final < 0 ? glyphSet(-final) : sets[final] ?? blank), macros];
    this.left = 0;
    this.right = 2;
  }

  get advance() {
    return (this.font[0] + this.space[0]) * this.scale[0];
  }

  get line() {
    return (this.font[1] + this.space[1]) * this.scale[1];
  }

  home() {
    this.x = this.x0;
    this.y = this.y0 + this.line;
  }

  newLine() {
    this.x = this.x0;
    this.y += this.line;
  }

  /** Takes the characters that the stream defines. */
  define(unit, isDouble) {
    for (let at = 1, left = unit[0]; left > 0 && at + 3 <= unit.length; --left) {
      const code = unit[at] << 8 | unit[at + 1];
      const key = isDouble ? 0x400000 | code : (unit[at] << 16) | unit[at + 1];
      const fonts = unit[at + 2];
      at += 3;
      for (let font = 0; font < fonts; ++font) {
        if ((unit[at] & 15) > 1) { // geometric data
          at += 5 + (unit[at + 3] << 8 | unit[at + 4]);
          continue;
        }
        const [depth, width, height] = unit.subarray(at + 1, at + 4);
        const bits = Math.max(1, Math.ceil(Math.log2((depth ?? 0) + 2)));
        const size = Math.ceil(width * height * bits / 8);
        if (font === 0 && width > 0 && height > 0 && at + 4 + size <= unit.length) {
          this.patterns.set(key, { width, height, bits, data: unit.slice(at + 4, at + 4 + size) });
        }
        at += 4 + size;
      }
    }
  }

  put(glyph) {
    for (; this.repeat > 0; --this.repeat) {
      if (this.x + this.advance > this.x0 + this.areaWidth + 0.5) {
        this.newLine();
      }
      const cell = { x: this.x, y: this.y - this.line, width: this.advance, height: this.line };
      const size = { width: this.font[0] * this.scale[0], height: this.font[1] * this.scale[1] };
      if (this.glyphs.length < mostGlyphs) {
        this.glyphs.push({ ...glyph, cell, size, foreground: this.foreground, background: this.background });
      }
      this.x += this.advance;
    }
    this.repeat = 1;
  }

  character(set, bytes) {
    if (set.isMacro) {
      this.designate(defaultMacros[bytes[0] - 0x60] ?? [0x42, 0x4a, 0x30]);
    } else if (set.glyphs) {
      const pattern = this.patterns.get(set.bytes === 2 ? 0x400000 | bytes[0] << 8 | bytes[1] : set.glyphs << 16 | bytes[0]);
      this.put(pattern ? { pattern } : { char: "〓" });
    } else {
      this.put({ char: set.char(...bytes) });
    }
  }

  *text(bytes) {
    let shift = -1; // G2 or G3, for one character
    for (let at = 0; at < bytes.length;) {
      const code = bytes[at];
      const low = code & 0x7f;
      if (low > 0x20 && low < 0x7f) {
        const set = this.g[shift >= 0 ? shift : code & 0x80 ? this.right : this.left];
        const these = [...bytes.subarray(at, at + set.bytes)].map(byte => byte & 0x7f);
        shift = -1;
        at += set.bytes;
        if (these.length === set.bytes) {
          this.character(set, these);
        }
      } else if (low === 0x20) {
        this.put({ char: " " });
        ++at;
      } else if (code === 0x19 || code === 0x1d) {
        shift = code === 0x19 ? 2 : 3;
        ++at;
      } else if (code === 0x1b) {
        at = this.escape(bytes, at + 1);
      } else if (code === 0x9b) {
        at = this.sequence(bytes, at + 1);
      } else if (code === 0x9d && bytes[at + 1] === 0x20) {
        yield (bytes[at + 2] & 0x3f) / 10;
        at += 3;
      } else {
        at += 1 + this.control(code, bytes.subarray(at + 1, at + 3));
      }
    }
  }

  /** Returns how many parameters the control code has. */
  control(code, [first, second]) {
    switch (code) {
      case 0x08: this.x -= this.advance; return 0;
      case 0x09: this.x += this.advance; return 0;
      case 0x0a: this.y += this.line; return 0;
      case 0x0b: this.y -= this.line; return 0;
      case 0x0c: this.glyphs = []; this.home(); return 0;
      case 0x0d: this.newLine(); return 0;
      case 0x0e: this.left = 1; return 0;
      case 0x0f: this.left = 0; return 0;
      case 0x16: this.x += this.advance * (first & 0x3f); return 1;
      case 0x1c:
        this.x = this.x0 + (second & 0x3f) * this.advance;
        this.y = this.y0 + ((first & 0x3f) + 1) * this.line;
        return 2;
      case 0x88: this.scale = [0.5, 0.5]; return 0;
      case 0x89: this.scale = [0.5, 1]; return 0;
      case 0x8a: this.scale = [1, 1]; return 0;
      case 0x8b: this.scale = { 0x41: [1, 2], 0x44: [2, 1], 0x45: [2, 2] }[first] ?? [1, 1]; return 1;
      case 0x90: return this.setColour(first, second);
      case 0x91: case 0x93: case 0x94: case 0x97: return 1;
      case 0x92: return first === 0x20 ? 2 : 1;
      case 0x98: this.repeat = (first & 0x3f) || 1; return 1;
      case 0x9d: return 1;
      default:
        if (code >= 0x80 && code <= 0x87) {
          this.foreground = colours[code - 0x80 + 16 * this.palette] ?? colours[7];
        }
        return 0;
    }
  }

  setColour(first, second) {
    if (first === 0x20) {
      this.palette = second & 15;
      return 2;
    }
    const chosen = colours[16 * this.palette + (first & 15)] ?? null;
    if ((first & 0x70) === 0x40) {
      this.foreground = chosen;
    } else if ((first & 0x70) === 0x50) {
      this.background = chosen;
    }
    return 1;
  }

  /** Designates and invokes code sets. Returns where the text goes on. */
  escape(bytes, at) {
    const invoked = { 0x6e: ["left", 2], 0x6f: ["left", 3], 0x7e: ["right", 1], 0x7d: ["right", 2], 0x7c: ["right", 3] }[bytes[at]];
    if (invoked) {
      this[invoked[0]] = invoked[1];
      return at + 1;
    }
    at += bytes[at] === 0x24 ? 1 : 0;
    const hasPlace = bytes[at] >= 0x28 && bytes[at] <= 0x2b;
    const place = hasPlace ? bytes[at++] - 0x28 : 0;
    const isGlyphs = bytes[at] === 0x20;
    at += isGlyphs ? 1 : 0;
    this.g[place] = isGlyphs ? glyphSet(bytes[at]) : sets[bytes[at]] ?? blank;
    return at + 1;
  }

  /** A control sequence: numbers and what they set. Returns where the text goes on. */
  sequence(bytes, at) {
    let parameters = "";
    while (at < bytes.length && bytes[at] < 0x40) {
      parameters += String.fromCharCode(bytes[at++]);
    }
    const [first = 0, second = 0] = parameters.trim().split(";").map(Number);
    switch (bytes[at]) {
      case 0x53: this.begin(first); break;
      case 0x56: [this.areaWidth, this.areaHeight] = [first, second]; break;
      case 0x57: this.font = [first, second]; break;
      case 0x58: this.space = [first, this.space[1]]; break;
      case 0x59: this.space = [this.space[0], first]; break;
      case 0x5f: [this.x0, this.y0] = [first, second]; this.home(); break;
      case 0x61: [this.x, this.y] = [first, second]; break;
    }
    return at + 1;
  }
}
