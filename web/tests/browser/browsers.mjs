// Chromium and Firefox of the system, driven in one way.
import { existsSync } from "node:fs";
import { chromium } from "playwright-core";
import puppeteer from "puppeteer-core";

/** @typedef {{ name: string, page: any, requests: string[], complaints: string[], resize: (width: number, height: number) => Promise<void>, wheel: (by: number) => Promise<void>, dark: (on: boolean) => Promise<void>, close: () => Promise<void> }} Session */

async function openChromium() {
  const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox"] });
  const context = await browser.newContext({ offline: true });
  const page = await context.newPage();
  return {
    page,
    resize: (width, height) => page.setViewportSize({ width, height }),
    wheel: (by) => page.mouse.wheel(0, by),
    dark: (on) => page.emulateMedia({ colorScheme: on ? "dark" : "light" }),
    close: () => browser.close(),
  };
}

/** Firefox takes its theme when it starts. */
async function openFirefox() {
  const browser = await puppeteer.launch({
    browser: "firefox",
    executablePath: "/usr/bin/firefox-esr",
    extraPrefsFirefox: { "layout.css.prefers-color-scheme.content-override": 1 },
  });
  const page = await browser.newPage();
  return {
    page,
    resize: (width, height) => page.setViewport({ width, height }),
    wheel: (by) => page.mouse.wheel({ deltaY: by }),
    dark: async () => {},
    close: () => browser.close(),
  };
}

const BROWSERS = {
  chromium: { program: "/usr/bin/chromium", open: openChromium },
  firefox: { program: "/usr/bin/firefox-esr", open: openFirefox },
};

export const browserNames = Object.keys(BROWSERS);

/** @returns {Promise<Session>} */
export async function openBrowser(name) {
  const { program, open } = BROWSERS[name];
  if (!existsSync(program)) throw new Error(`${program} is not installed`);
  const session = { name, requests: [], complaints: [], ...(await open()) };
  const { page, requests, complaints } = session;
  page.on("request", (request) => requests.push(request.url()));
  page.on("console", (message) => ["error", "warning", "warn"].includes(message.type()) && complaints.push(message.text()));
  page.on("pageerror", (error) => complaints.push(String(error)));
  await session.resize(1280, 1000);
  return session;
}

/** Until the expression holds in the page; the page's policy allows no polling of the drivers' own. */
export async function until(page, what, holds) {
  for (const end = Date.now() + 20_000; Date.now() < end; ) {
    if (await page.evaluate(holds)) return;
    await new Promise((go) => setTimeout(go, 20));
  }
  throw new Error(`waited in vain: ${what}`);
}

/** Opens a page; answers the milliseconds until it could be used. */
export async function openPage({ page }, file) {
  const begin = performance.now();
  await page.goto(`file://${file}`);
  await until(page, "the page is ready", () => document.documentElement.dataset.ready === "true");
  const time = performance.now() - begin;
  // What the page saves is kept for the test.
  await page.evaluate(() => {
    window.saved = [];
    URL.createObjectURL = (blob) => (window.saved.push(blob), "blob:test");
    HTMLAnchorElement.prototype.click = () => {};
  });
  return time;
}

/** The text of the file that a button saves. */
export async function savedText(page, button) {
  const before = await page.evaluate(() => window.saved.length);
  await page.click(button);
  for (const end = Date.now() + 30_000; Date.now() < end; ) {
    const text = await page.evaluate((n) => window.saved[n]?.text(), before);
    if (text !== undefined && text !== null) return text;
    await new Promise((go) => setTimeout(go, 20));
  }
  throw new Error(`${button} saved nothing`);
}

/** CSS pixels of the middle of a pixel of the frame, in a page that shows the whole frame. */
export function placeOf(page, x, y) {
  return page.evaluate(
    ([x, y]) => {
      const canvas = document.getElementById("picture");
      canvas.scrollIntoView({ block: "center" });
      const head = JSON.parse(document.getElementById("ovix-head").textContent);
      const box = canvas.getBoundingClientRect();
      const scale = Math.min(box.width / head.width, box.height / head.height);
      const left = box.left + (box.width - head.width * scale) / 2;
      const top = box.top + (box.height - head.height * scale) / 2;
      return { x: left + (x + 0.5) * scale, y: top + (y + 0.5) * scale };
    },
    [x, y],
  );
}

/** Points at pixels one after the other, with the button down between the first and the last. */
export async function drag(page, ...pixels) {
  for (const [i, [x, y]] of pixels.entries()) {
    const place = await placeOf(page, x, y);
    await page.mouse.move(place.x, place.y);
    if (i === 0) await page.mouse.down();
  }
  await page.mouse.up();
}

export const textOf = (page, id) => page.evaluate((id) => document.getElementById(id).textContent, id);
