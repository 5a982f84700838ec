# SPDX-License-Identifier: MIT
"""ISDB captions over the picture of the panel, in a browser."""
import importlib.util
import subprocess
import tempfile
from pathlib import Path

from support import SAMPLE, PageTest, wait_for


def add_captions():
    """The program that adds the captions to the sample, as a module."""
    spec = importlib.util.spec_from_file_location("add_captions", SAMPLE.parent / "add-captions.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


class CaptionTest(PageTest):
    def shown(self):
        """The text that is drawn."""
        return self.attribute("captions", "aria-label")

    count = """
        const count = () => {
          const c = document.getElementById('captions');
          let pixels = 0;
          for (const pixel of new Uint32Array(c.getContext('2d').getImageData(0, 0, c.width, c.height).data.buffer)) {
            pixels += pixel >>> 24 ? 1 : 0;
          }
          return pixels;
        };"""

    def drawn(self):
        """Pixels of the captions that are not transparent."""
        return self.driver.execute_script(f"{self.count} return count();")


class Sample(CaptionTest):
    def test_appears_and_disappears(self):
        self.simulator.ctl("sim", "seek", "2.5")
        self.simulator.ctl("sim", "speed", "2")
        seen = self.driver.execute_async_script(f"""{self.count}
            const done = arguments[0], captions = document.getElementById('captions'), seen = [];
            new MutationObserver((_, observer) => {{
              const text = captions.getAttribute('aria-label'), isDrawn = count() > 200;
              if (seen.length > 0 ? text !== seen.at(-1)[0] : text === 'に') {{
                seen.push([text, isDrawn]);
              }}
              if (seen.length === 5) {{
                observer.disconnect();
                done(seen);
              }}
            }}).observe(captions, {{ attributeFilter: ['aria-label'] }});""")
        self.assertEqual(seen, [["に", True], ["", False], ["さん", True], ["", False], ["よん", True]])

    def test_follows_seeks_in_a_pause(self):
        self.simulator.ctl("sim", "pause")
        for position, text in (("5.8", "さん"), ("6.9", ""), ("1.9", "いち")):
            self.simulator.ctl("sim", "seek", position)
            wait_for(lambda: self.shown() == text and (self.drawn() > 200) == bool(text), f"the caption at {position}")

    def test_is_covered_with_the_picture(self):
        wait_for(lambda: self.drawn() > 200)
        self.simulator.ctl("sim", "mute", "video", "on")
        wait_for(lambda: self.driver.execute_script(
            "return getComputedStyle(document.getElementById('captions')).visibility") == "hidden")

    def test_a_page_opened_later_shows_it(self):
        self.simulator.ctl("sim", "pause")
        self.simulator.ctl("sim", "seek", "5.8")
        wait_for(lambda: self.shown() == "さん")
        self.driver.get(self.simulator.address)
        wait_for(lambda: self.shown() == "さん")

    def test_ends_with_the_input(self):
        self.simulator.ctl("sim", "pause")
        self.simulator.ctl("sim", "seek", "5.8")
        wait_for(lambda: self.shown() == "さん")
        silent = Path(self.simulator.folder.name, "silent.ts")
        subprocess.run(["ffmpeg", "-v", "fatal", "-f", "lavfi", "-i", "sine=d=20", "-c:a", "mp2", silent], check=True)
        self.simulator.ctl("sim", "load", str(silent))
        wait_for(lambda: self.shown() == "" and self.drawn() == 0)


class TwoLanguages(CaptionTest):
    """A stream with each caption in Japanese and, as the second language, in English."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="zviptv-captions-")
        cls.addClassCleanup(folder.cleanup)
        bare = Path(folder.name, "bare.ts")
        subprocess.run(["ffmpeg", "-v", "fatal", "-f", "lavfi", "-i", "color=gray:s=64x36:r=25:d=12", "-c:v", "libx264",
                        "-preset", "ultrafast", "-g", "25", bare], check=True)
        maker = add_captions()
        one_language = maker.schedule

        def schedule():
            for pts, pid, packet in one_language():
                yield pts, pid, packet
                if pid == maker.ARIB_PID and len(packet) > 40:  # a text
                    letters = b"\x0c\x9b\x37\x20\x53\x0e" + b"English"
                    unit = b"\x1f\x20" + len(letters).to_bytes(3, "big") + letters
                    data = b"\x3f" + len(unit).to_bytes(3, "big") + unit
                    yield pts, pid, maker.arib_pes(pts, 2, data)
        maker.management = lambda: bytes([0x3F, 2, 0x10]) + b"jpn" + b"\x80" + bytes([0x30]) + b"eng" + b"\x80" + bytes(3)
        maker.schedule = lambda: list(schedule())
        cls.stream = Path(folder.name, "captions.ts")
        cls.stream.write_bytes(b"".join(maker.multiplex(bare.read_bytes())))

    def test_shows_the_selected_one(self):
        wait_for(lambda: len(self.status()["Captions"]) == 2)
        self.simulator.ctl("sim", "seek", "4.9")
        wait_for(lambda: self.shown() == "さん")
        self.simulator.ctl("sim", "pause")
        wait_for(lambda: self.shown() in ("", "さん"))
        self.select(1)
        wait_for(lambda: self.shown() == "" and self.drawn() == 0)
        self.simulator.ctl("sim", "speed", "2")
        self.simulator.ctl("sim", "play")
        wait_for(lambda: self.shown() == "English" and self.drawn() > 200)
        self.select(0)
        wait_for(lambda: self.shown() in ("よん", "ご"))

    def select(self, index):
        result = self.simulator.ctl("captions", "select", "caption", str(index))
        self.assertEqual(result.returncode, 0, result.stderr)


class Decoder(PageTest):
    """Tests the decoder of caption statements in the page."""

    hasPicture = False
    isPaused = True

    def reset(self):
        """The tests change nothing."""

    def decode(self, text, units=b""):
        """Decodes a text. Returns the characters with their places and colours, and the waits in seconds."""
        unit = b"\x1f\x20" + len(text).to_bytes(3, "big") + text
        data = b"\x3f" + len(units + unit).to_bytes(3, "big") + units + unit
        return self.driver.execute_async_script("""
            const [bytes, done] = arguments;
            import('./arib.js').then(({ CaptionDecoder }) => {
              const decoder = new CaptionDecoder(), waits = [...decoder.run(Uint8Array.from(bytes))];
              done({ text: decoder.string, waits, plane: [decoder.width, decoder.height], glyphs: decoder.glyphs.map(
                glyph => ({ ...glyph, pattern: glyph.pattern && [...glyph.pattern.data] })) });
            }).catch(error => done({ text: String(error) }));""", list(data))

    def test_code_sets(self):
        for text, expected in (
                (b"\x46\x7c\x4b\x5c", "日本"),                             # kanji
                (b"\xa2\xa4\xf9", "あいー"),                               # hiragana, above 0xa0
                (b"\x0eABC\x5c\x0f\x46\x7c", "ABC¥日"),                    # letters, then kanji again
                (b"\x1b\x28\x31\x22\x24\x7a", "アイ。"),                   # katakana as G0
                (b"\x1b\x29\x31\x0e\x22", "ア"),                           # as G1
                (b"\x19\x22\x46\x7c", "あ日"),                             # a single hiragana
                (b"\x1d\x61\x0e\x22", "ア"),                               # a macro that designates
                (b"\x1b\x28\x49\x31\x32", "ｱｲ"),
                (b"\x7d\x7a\x7c\x21\x7a\x50", "♬➡🅊"),                     # additional characters
                (b"\x1b\x28\x4a\x1b\x2a\x4b\xe9", "é"),                    # Latin letters of Brazil
                (b"\x46\x7c\x0c\xa2", "あ"),                               # after a clear
                (b"\x98\x43\xa2", "あああ"),                               # repeated
                (b"\x46", ""), (b"\x1b", ""), (b"\x9b", ""), (b"\x90", ""), (b"\x9d", ""), (b"\x1b\x24", "")):  # cut
            self.assertEqual(self.decode(text)["text"], expected, text)

    def test_places_and_sizes(self):
        glyphs = self.decode(b"\x9b\x37\x20\x53\x1c\x47\x50\xa2\x89\xa4\x88\xa6\x0d\x8a\xa2")["glyphs"]
        cells = [tuple(glyph["cell"][key] for key in ("x", "y", "width", "height")) for glyph in glyphs]
        self.assertEqual(cells, [(640, 420, 40, 60), (680, 420, 20, 60), (700, 450, 20, 30), (0, 450, 40, 60)])
        self.assertEqual(self.decode(b"\x9b9 S\xa2")["plane"], [720, 480])
        placed = self.decode(b"\x9b7 S\x9b170;30 _\x9b300;200 V\x9b30;30 W\x9b2 X\x9b10 Y\x9b200;100 a\xa2")["glyphs"][0]
        self.assertEqual((placed["cell"], placed["size"]),
                         ({"x": 200, "y": 60, "width": 32, "height": 40}, {"width": 30, "height": 30}))

    def test_colours(self):
        glyphs = self.decode(b"\xa2\x83\xa2\x90\x51\xa2\x90\x20\x44\x90\x51\xa2")["glyphs"]
        self.assertEqual([(glyph["foreground"], glyph["background"]) for glyph in glyphs], [
            ("rgb(255 255 255 / 1)", None), ("rgb(255 255 0 / 1)", None), ("rgb(255 255 0 / 1)", "rgb(255 0 0 / 1)"),
            ("rgb(255 255 0 / 1)", "rgb(0 0 0 / 0.5)")])

    def test_characters_of_the_stream(self):
        pattern = b"\x01\x41\x21\x01\x01\x02\x02\x02\x1b"  # one, DRCS-1, code 0x21, one font, 4 levels, 2x2
        unit = b"\x1f\x30" + len(pattern).to_bytes(3, "big") + pattern
        decoded = self.decode(b"\x1b\x28\x20\x41\x21\x22", unit)
        self.assertEqual([glyph["pattern"] for glyph in decoded["glyphs"]], [[0x1B], None])
        self.assertEqual(decoded["text"], "〓")

    def test_damaged_statements(self):
        """Random bytes as texts, as characters of the stream and as whole statements."""
        failed = self.driver.execute_async_script("""
            const done = arguments[0]; let seed = 1;
            const random = most => (seed = seed * 48271 % 2147483647) % most;
            import('./arib.js').then(({ CaptionDecoder }) => {
              const decoder = new CaptionDecoder();
              for (let turn = 0; turn < 5000; ++turn) {
                const bytes = Uint8Array.from({ length: random(200) }, () => random(256));
                const kind = [0x20, 0x30, 0x31][random(3)];
                bytes.set([0x3f, 0, 0, 180, 0x1f, kind, 0, 0, 170].slice(0, random(10)).slice(0, bytes.length));
                try {
                  [...decoder.run(bytes)];
                } catch (error) {
                  return done(`${error.stack} ${bytes}`);
                }
              }
              done(decoder.glyphs.length <= 2000 ? '' : 'too many characters');
            });""")
        self.assertEqual(failed, "")

    def test_waits(self):
        self.assertEqual(self.decode(b"\xa2\x9d\x20\x45\x0c")["waits"], [0.5])
