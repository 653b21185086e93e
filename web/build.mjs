// Makes dist/page.html, the whole page but for its data, or the unit tests and the fuzzer as programs for node.
//
//   node build.mjs             dist/page.html
//   node build.mjs --out FILE  the same elsewhere, as seen from this folder
//   node build.mjs --tests     ../build/web/tests/*.test.mjs
//   node build.mjs --fuzz      ../build/web/fuzz/*.mjs
import { build } from "esbuild";
import { createHash } from "node:crypto";
import { mkdir, readFile, readdir, writeFile } from "node:fs/promises";
import { dirname } from "node:path";
import { argv, chdir, cwd } from "node:process";
import { fileURLToPath } from "node:url";

chdir(dirname(fileURLToPath(import.meta.url)));

/** What a browser compares an inline script or style with. */
const hashOf = (text) => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;

async function bundle(entryPoint) {
  const result = await build({
    absWorkingDir: cwd(),
    entryPoints: [entryPoint],
    bundle: true,
    minify: true,
    write: false,
    format: "iife",
    target: ["es2022"],
    charset: "utf8",
    legalComments: "none",
    logLevel: "warning",
  });
  return result.outputFiles[0].text.trim();
}

async function buildPage(target) {
  const script = await bundle("src/main.ts");
  const style = await bundle("src/page_style.css");
  for (const text of [script, style]) {
    if (/<\/(script|style)|<!--/i.test(text)) throw new Error("the bundle would end its own element");
  }
  const policy = [
    "default-src 'none'",
    `script-src ${hashOf(script)}`,
    `style-src ${hashOf(style)}`,
    "img-src data:",
    "base-uri 'none'",
    "form-action 'none'",
  ].join("; ");
  const licence = await readFile("node_modules/uplot/LICENSE", "utf8");
  const { version } = JSON.parse(await readFile("node_modules/uplot/package.json", "utf8"));
  const parts = { policy, style, script, data: "{{data}}", licences: `uPlot ${version}\n\n${licence.trim()}` };
  const page = (await readFile("src/page.html", "utf8")).replace(/{{(\w+)}}/g, (_, name) => parts[name]);
  await mkdir(dirname(target), { recursive: true });
  await writeFile(target, page);
}

/** What stands in a folder as programs for node. */
async function buildPrograms(folder, ending) {
  const names = (await readdir(folder)).filter((name) => name.endsWith(ending));
  await build({
    absWorkingDir: cwd(),
    entryPoints: names.map((name) => `${folder}/${name}`),
    bundle: true,
    platform: "node",
    format: "esm",
    outdir: `../build/web/${folder}`,
    outExtension: { ".js": ".mjs" },
    logLevel: "warning",
  });
}

if (argv[2] === "--tests") await buildPrograms("tests", ".test.ts");
else if (argv[2] === "--fuzz") await buildPrograms("fuzz", ".ts");
else await buildPage(argv[2] === "--out" ? argv[3] : "dist/page.html");
