// The page in real browsers, against what the tool writes of the same frames without it.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { after, before, describe, test } from "node:test";
import { browserNames, drag, openBrowser, openPage, placeOf, savedText, textOf, until } from "./browsers.mjs";
import { bytesOf, headOf, inFolder, makeFrames, readCsv, readNpy, tool } from "./truth.mjs";

const [WIDTH, HEIGHT, COUNT, STEP] = [320, 240, 6, 0.05];
const HALF = STEP / 2 + 1e-4;
const BAD_NAME = "</script><!--<script><b>x";
const ROI = ["bearing=190,100,40,44", "shaft=circle:205,122,12.5", "base=polygon:60,150,120,155,110,190,70,180", `${BAD_NAME}=0,0,9,5`].flatMap((region) => ["--roi", region]);
const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

let frames, values, status;

before(() => {
  frames = makeFrames("frames.raw", COUNT, `${WIDTH}x${HEIGHT}`);
  tool("report", ...frames, ...ROI, "-o", "page.html");
  tool("convert", ...frames, "-o", "truth.npy");
  [values, status] = [readNpy("truth.npy"), readNpy("truth.status.npy")];
});

const at = (frame, x, y) => (frame * HEIGHT + y) * WIDTH + x;
const near = (found, expected, within, what) => assert.ok(Math.abs(found - expected) <= within, `${what}: ${found}, expected ${expected}`);

/** Sets a field as a person does who types and leaves it. */
const type = (page, id, text) =>
  page.evaluate(([id, text]) => {
    const field = document.getElementById(id);
    field.value = text;
    field.dispatchEvent(new Event("input"));
    field.dispatchEvent(new Event("change"));
  }, [id, text]);

/** The cells of the regions' rows: name, mean, min, max, std, pixels, good. */
const regionRows = (page) =>
  page.evaluate(() =>
    [...document.querySelectorAll("#regions tr")].slice(1).map((row) => [row.querySelector("input")?.value ?? "whole frame", ...[...row.cells].slice(1).map((cell) => cell.textContent)]),
  );
const lastRegion = async (page) => (await regionRows(page)).at(-1);

/** Mean of a rectangle of the first frame over the good pixels. */
function meanOf(x0, y0, x1, y1) {
  let [sum, count] = [0, 0];
  for (let y = y0; y <= y1; ++y) for (let x = x0; x <= x1; ++x) if (!status[at(0, x, y)]) [sum, count] = [sum + values[at(0, x, y)], count + 1];
  return sum / count;
}

/** A pixel of the first frame that bears the flag. */
function flagged(bit) {
  const i = status.findIndex((byte) => byte & bit);
  assert.ok(i >= 0 && i < WIDTH * HEIGHT, `the scene has a pixel with status ${bit}`);
  return [i % WIDTH, Math.floor(i / WIDTH)];
}

for (const name of browserNames) {
  describe(name, { timeout: 300_000 }, () => {
    let session, page;
    before(async () => {
      session = await openBrowser(name);
      page = session.page;
      await openPage(session, inFolder("page.html"));
    });
    after(() => session?.close());

    test("pixels are those of convert within half a step, in every frame and unit", async () => {
      for (const [scale, factor, offset] of [["C", 1, 0], ["F", 1.8, 32], ["K", 1, 273.15]]) {
        await type(page, "scale", scale);
        const frame = scale === "C" ? 0 : COUNT - 1;
        await type(page, "position", String(frame));
        await until(page, "the frame is shown", `document.getElementById("moment").textContent.startsWith("frame ${frame} ")`);
        const rows = (await savedText(page, "#save-pixels")).trim().split("\n").slice(1);
        assert.equal(rows.length, HEIGHT);
        rows.forEach((row, y) => {
          const [number, line, ...fields] = row.split(",").map(Number);
          assert.deepEqual([number, line, fields.length], [frame, y, WIDTH]);
          fields.forEach((field, x) => near((field - offset) / factor, values[at(frame, x, y)], HALF, `${scale} ${x},${y}`));
        });
      }
      await type(page, "scale", "C");
      await type(page, "position", "0");
    });

    test("zooming shows a part of the frame around its middle", async () => {
      const rows = async () => (await savedText(page, "#save-pixels")).trim().split("\n").slice(1).map((row) => row.split(",").slice(0, 3).map(Number));
      await page.click("#zoom-in");
      await page.click("#zoom-in");
      const seen = await rows();
      near(seen.length, HEIGHT / 1.5 ** 2, 2, "rows in view");
      near((seen[0][1] + seen.at(-1)[1]) / 2, (HEIGHT - 1) / 2, 1, "row in the middle");
      const left = Math.round((WIDTH - WIDTH / 1.5 ** 2) / 2);
      assert.ok([-1, 0, 1].some((by) => Math.abs(seen[0][2] - values[at(0, left + by, seen[0][1])]) <= HALF), "the first pixel in view");
      await page.click("#zoom-fit");
      assert.equal((await rows()).length, HEIGHT);
      const place = await placeOf(page, 40, 200);
      await page.mouse.move(place.x, place.y);
      await session.wheel(-500);
      await until(page, "the reading", () => document.getElementById("reading").textContent.startsWith("x 40, y 200: "));
      const wheeled = await rows();
      assert.ok(wheeled.length < HEIGHT && wheeled[0][1] <= 200 && wheeled.at(-1)[1] >= 200, "the pixel under the wheel stays in view");
      await page.click("#zoom-fit");
    });

    test("figures over all frames are those of stats", async () => {
      const same = ["frame", "region", "x (px)", "y (px)", "width (px)", "height (px)", "counted (px)", "good (px)", "underflow (px)", "overflow (px)", "noData (px)"];
      const counted = [];
      for (const [choice, ...option] of [["counted"], ["good", "--good-only"]]) {
        await type(page, "figures-of", choice);
        const ours = readCsv((await savedText(page, "#save-regions")).replaceAll(BAD_NAME, "bad"));
        const theirs = readCsv(tool("stats", ...frames, "--roi", `frame=0,0,${WIDTH},${HEIGHT}`, ...ROI, ...option, "--csv").replaceAll(BAD_NAME, "bad"));
        assert.deepEqual([ours.length, theirs.length], [5 * COUNT, 5 * COUNT]);
        ours.forEach((mine, i) => {
          for (const column of same) assert.equal(mine[column], theirs[i][column], `${mine.region} ${column}`);
          for (const column of ["min (°C)", "max (°C)", "mean (°C)", "std (K)"]) near(+mine[column], +theirs[i][column], HALF, `${mine.region} ${column}`);
        });
        counted.push(+ours[0]["counted (px)"]);
      }
      assert.ok(counted[1] < counted[0], "the frame has bad pixels");
    });

    test("a pixel has the colour of its palette, its value and its status", async () => {
      await page.evaluate(() => (document.getElementById("palette").value = "viridis"));
      await type(page, "palette", "viridis");
      await type(page, "low", "10");
      await type(page, "high", "60");
      const head = headOf("page.html");
      const palette = head.palettes.find((one) => one.name === "viridis").colours.match(/.{6}/g);
      const plain = [[100, 100], [209, 121], [20, 200], [310, 10]];
      for (const [x, y, bit] of [...plain, [...flagged(4), 4], [...flagged(32), 32]]) {
        const i = at(0, x, y);
        const value = Math.round(values[i] / STEP) * STEP;
        const flag = status[i] & 32 ? "noData" : status[i] & 2 ? "under" : status[i] & 4 ? "over" : null;
        const expected = flag ? head.colours[flag] : palette[Math.round(255 * Math.min(1, Math.max(0, (value - 10) / 50)))];
        const place = await placeOf(page, x, y);
        await page.mouse.move(0, 0);
        await new Promise((go) => setTimeout(go, 50));
        const drawn = await page.evaluate(({ x, y }) => {
          const canvas = document.getElementById("picture");
          const box = canvas.getBoundingClientRect();
          const ratio = canvas.width / box.width;
          const data = canvas.getContext("2d").getImageData((x - box.left) * ratio, (y - box.top) * ratio, 1, 1).data;
          return [...data].slice(0, 3).map((byte) => byte.toString(16).padStart(2, "0")).join("");
        }, place);
        assert.equal(drawn, expected, `colour of ${x},${y}`);
        await page.mouse.move(place.x, place.y);
        await until(page, "the pixel is read", `document.getElementById("reading").textContent.startsWith("x ${x}, y ${y}: ")`);
        const reading = await textOf(page, "reading");
        near(parseFloat(reading.split(": ")[1]), values[i], HALF, reading);
        const word = { undefined: "good", 4: "above the range", 32: "no data" }[bit];
        assert.ok(reading.includes(word), `${reading} says ${word}`);
      }
    });

    test("the bar is dragged, and the picture saved is the one that is seen", async () => {
      const ends = () => page.evaluate(() => ["low", "high"].map((id) => +document.getElementById(id).value));
      for (const [grip, low, high] of [["level", 20, 70], ["high", 20, 82.5], ["low", 35.63, 82.5]]) {
        const box = await page.evaluate((id) => document.getElementById(id).getBoundingClientRect().toJSON(), `bar-${grip}`);
        const colours = (await page.evaluate(() => document.getElementById("bar-picture").clientHeight)) - 35;
        const [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
        await page.mouse.move(x, y);
        await page.mouse.down();
        await page.mouse.move(x, y - colours * (grip === "level" ? 0.2 : 0.25));
        await page.mouse.up();
        await new Promise((go) => setTimeout(go, 50));
        const found = await ends();
        near(found[0], low, 0.5, `lower end after ${grip}`);
        near(found[1], high, 0.5, `upper end after ${grip}`);
      }
      await page.mouse.move(0, 0);
      await page.click("#save-picture");
      await until(page, "a picture", () => window.saved.at(-1)?.type === "image/png");
      const [seen, saved] = await page.evaluate(async () => {
        const canvas = document.getElementById("picture");
        const [x, y] = [Math.floor(canvas.clientWidth / 3), Math.floor(canvas.clientHeight / 2)];
        const copy = document.createElement("canvas").getContext("2d");
        copy.drawImage(await createImageBitmap(window.saved.at(-1)), -12 - x, -12 - y);
        return [canvas.getContext("2d").getImageData(x, y, 1, 1).data, copy.getImageData(0, 0, 1, 1).data].map((data) => [...data].join());
      });
      assert.equal(saved, seen);
    });

    test("regions are drawn, moved, named and deleted with the mouse", async () => {
      const shapes = { spot: [[[50, 60]], 1], line: [[[50, 60], [90, 60]], 41], rectangle: [[[50, 60], [59, 79]], 200], circle: [[[150, 60], [150, 63]], 29] };
      for (const [shape, [pixels, count]] of Object.entries(shapes)) {
        await page.click(`#tools button:nth-child(${["look", "spot", "line", "rectangle", "circle"].indexOf(shape) + 1})`);
        await drag(page, ...pixels);
        await until(page, `a ${shape}`, `[...document.querySelectorAll("#regions input")].at(-1).value.toLowerCase().startsWith("${shape}")`);
        assert.equal((await lastRegion(page))[5], String(count), shape);
        if (shape !== "rectangle") continue;
        near(+(await lastRegion(page))[1], meanOf(50, 60, 59, 79), HALF, "mean before");
        await drag(page, [55, 70], [65, 75]);
        await new Promise((go) => setTimeout(go, 100));
        near(+(await lastRegion(page))[1], meanOf(60, 65, 69, 84), HALF, "mean after it was moved");
      }
      await page.click("#tools button:nth-child(6)");
      for (const corner of [[200, 20], [220, 20], [220, 40]]) await drag(page, corner);
      await drag(page, [220, 40]);
      await until(page, "a polygon", () => [...document.querySelectorAll("#regions input")].at(-1).value.startsWith("Polygon"));
      assert.equal((await lastRegion(page))[5], String((21 * 22) / 2));
      await page.click("#regions tr:last-child input");
      await page.keyboard.type("!");
      assert.match((await lastRegion(page))[0], /^Polygon.*!|!/);
      const before = (await regionRows(page)).length;
      await page.click("#regions tr:last-child button[title=Delete]");
      await until(page, "one region less", `document.querySelectorAll("#regions tr").length === ${before}`);
    });

    test("all of that by keys alone", async () => {
      const press = async (...keys) => {
        for (const key of keys) await page.keyboard.press(key);
      };
      await page.evaluate(() => document.getElementById("picture").focus());
      await press("Escape", "Escape", "0", "r");
      await press("ArrowRight", "Enter", "ArrowRight", "ArrowRight", "ArrowDown", "Enter");
      const [x, y] = [WIDTH / 2 + 1, HEIGHT / 2];
      const drawn = await lastRegion(page);
      assert.equal(drawn[5], "6");
      near(+drawn[1], meanOf(x, y, x + 2, y + 1), HALF, "mean where it was drawn");
      await press("ArrowLeft", "ArrowUp");
      near(+(await lastRegion(page))[1], meanOf(x - 1, y - 1, x + 1, y), HALF, "mean where it was moved");
      await page.keyboard.down("Control");
      await press("ArrowDown");
      await page.keyboard.up("Control");
      assert.equal((await lastRegion(page))[5], "9");
      const before = (await regionRows(page)).length;
      await press("Delete");
      assert.equal((await regionRows(page)).length, before - 1);
      await press(".", ".");
      await until(page, "the third frame", () => document.getElementById("moment").textContent.startsWith("frame 2 "));
      await press("Home");
      await until(page, "the first frame", () => document.getElementById("moment").textContent.startsWith("frame 0 "));
      await press(" ");
      await until(page, "it plays", () => !document.getElementById("moment").textContent.startsWith("frame 0 "));
      await press(" ");
      const [lowBefore] = await page.evaluate(() => [document.getElementById("low").value]);
      await page.evaluate(() => document.getElementById("bar-low").focus());
      await press("PageUp");
      assert.ok((await page.evaluate(() => +document.getElementById("low").value)) > +lowBefore, "the lower end went up");
    });

    test("the tabulator reaches every control", async () => {
      await page.evaluate(() => {
        const usable = (one) => !one.disabled && one.tabIndex >= 0 && one.checkVisibility();
        const all = [...document.querySelectorAll("button, input, select, summary, canvas[tabindex], [role=slider]")].filter(usable);
        window.wanted = new Set(all.slice(1));
        all[0].focus();
      });
      const most = 3 * (await page.evaluate(() => window.wanted.size));
      for (let i = 0; i < most && (await page.evaluate(() => window.wanted.size)); ++i) {
        await page.keyboard.press("Tab");
        await page.evaluate(() => window.wanted.delete(document.activeElement));
      }
      assert.deepEqual(await page.evaluate(() => [...window.wanted].map((one) => one.id || one.outerHTML)), []);
    });

    test("nothing that axe knows bars anybody, in light and dark, wide and narrow", async () => {
      await page.evaluate(axe);
      for (const [width, dark] of [[1600, false], [400, true]]) {
        await session.resize(width, 900);
        await session.dark(dark);
        const found = await page.evaluate(async () => (await window.axe.run()).violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(" ")}`));
        assert.deepEqual(found, [], `${width} pixels, ${dark ? "dark" : "light"}`);
        assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), `nothing sticks out of ${width} pixels`);
      }
    });

    test("a name stays a text, one file is read, nothing is complained of", async () => {
      assert.ok((await regionRows(page)).some(([region]) => region === BAD_NAME));
      assert.equal(await page.evaluate(() => document.querySelectorAll("b").length), 0);
      // Firefox does not report the opening of a file.
      const file = `file://${inFolder("page.html")}`;
      const requests = session.requests.filter((url) => !url.startsWith("data:"));
      assert.deepEqual(requests, name === "chromium" ? [file] : requests.length ? [file] : []);
      assert.deepEqual(session.complaints, []);
    });
  });
}

test("a page keeps to --max-size and says what that cost; a hundred frames are soon there", { timeout: 600_000 }, async (context) => {
  const hundred = [...makeFrames("hundred.raw", 100, "640x480", "--tables", "nuc"), "--correction", "nuc"];
  const whole = JSON.parse(tool("report", ...hundred, "-o", "hundred.html", "--json"));
  const small = JSON.parse(tool("report", ...hundred, "--max-size", "5M", "-o", "small.html", "--json"));
  assert.ok(bytesOf("small.html") <= 5e6 && small.bytes === bytesOf("small.html"), JSON.stringify(small));
  assert.ok(small.bin > 1 || small.step > whole.step);
  const head = headOf("small.html");
  assert.deepEqual([head.bin, head.step, head.width], [small.bin, small.step, Math.ceil(640 / small.bin)]);
  assert.throws(() => tool("report", ...hundred, "--max-size", "50k", "-o", "none.html"), /expected at most 50000 bytes/);
  for (const name of browserNames) {
    const session = await openBrowser(name);
    const time = await openPage(session, inFolder("hundred.html"));
    context.diagnostic(`${name}: 100 frames of 640x480, ${(whole.bytes / 1e6).toFixed(1)} MB, ready in ${Math.round(time)} ms`);
    await session.close();
  }
});
