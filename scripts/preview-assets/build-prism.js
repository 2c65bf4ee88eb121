// Builds PreviewAsset/prism/prism.js: Prism's core with the languages a
// writer's code blocks use most (each after the languages it needs) and the
// line numbers plugin. Usage: node build-prism.js NODE_MODULES OUT_FILE
"use strict";
const fs = require("fs");
const path = require("path");

const [modules, outFile] = process.argv.slice(2);
const prism = path.join(modules, "prismjs");
const components = JSON.parse(fs.readFileSync(path.join(prism, "components.json"), "utf8"));
const languages = components.languages;

// prism.js at the package's root holds the core with these already.
const included = new Set(["markup", "css", "clike", "javascript"]);
const wanted = [
  "bash", "c", "cpp", "csharp", "go", "java", "kotlin", "scala", "groovy", "swift", "objectivec", "rust",
  "python", "ruby", "perl", "php", "lua", "r", "julia", "matlab", "haskell", "elixir", "erlang", "dart",
  "coffeescript", "typescript", "jsx", "tsx", "json", "yaml", "toml", "ini", "sql", "graphql", "markdown",
  "latex", "diff", "docker", "makefile", "nginx", "powershell", "scss", "sass", "less", "protobuf",
];

const order = [];
function visit(id, stack) {
  if (included.has(id) || order.includes(id)) return;
  if (stack.includes(id)) throw new Error("dependency cycle at " + id);
  const entry = languages[id];
  if (!entry) throw new Error("no Prism language " + id);
  const requires = entry.require ? [].concat(entry.require) : [];
  for (const r of requires) visit(r, stack.concat(id));
  order.push(id);
}
for (const id of wanted) visit(id, []);

const parts = [fs.readFileSync(path.join(prism, "prism.js"), "utf8")];
for (const id of order) parts.push(fs.readFileSync(path.join(prism, "components", "prism-" + id + ".min.js"), "utf8"));
parts.push(fs.readFileSync(path.join(prism, "plugins", "line-numbers", "prism-line-numbers.min.js"), "utf8"));
fs.mkdirSync(path.dirname(outFile), { recursive: true });
fs.writeFileSync(outFile, parts.join("\n;\n"));
console.log("prism.js: core and " + order.length + " languages");
