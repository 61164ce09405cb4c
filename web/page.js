// The page: takes files, runs the program in a worker, shows the page of the results and offers what was written.

const byId = (id) => document.getElementById(id);
const PAGE = "results.html", REPORT = "report.txt", RESULTS = "results.json";
const PROGRESS = /^[a-z ]+( \d+ %)?$/; // a step of the program, and the share that is done

let files = [];   // { path, bytes } of the user, or of an example
let worker = null;
let addresses = []; // of blobs that the page shows or offers

function address(parts, type) {
  const it = URL.createObjectURL(new Blob(parts, { type }));
  addresses.push(it);
  return it;
}

const program = URL.createObjectURL(new Blob([byId("program").textContent, "\n", byId("worker").textContent], { type: "text/javascript" }));

// Files

async function ofFile(file, path) {
  return { path, bytes: new Uint8Array(await file.arrayBuffer()) };
}

// All files of what was dropped; of folders with their paths.
async function ofEntry(entry) {
  if (entry.isFile) return [await ofFile(await new Promise((done, fail) => entry.file(done, fail)), entry.fullPath.slice(1))];
  const reader = entry.createReader(), all = [];
  for (;;) { // a reader gives some entries at a time
    const some = await new Promise((done, fail) => reader.readEntries(done, fail));
    if (!some.length) return all;
    for (const each of some) all.push(...await ofEntry(each));
  }
}

async function dropped(transfer) {
  const entries = [...transfer.items].map((item) => item.webkitGetAsEntry && item.webkitGetAsEntry()).filter(Boolean);
  if (entries.length) return (await Promise.all(entries.map(ofEntry))).flat();
  return Promise.all([...transfer.files].map((file) => ofFile(file, file.name)));
}

const isNetwork = (path) => /\.inp$/i.test(path);

// The first network file is adjusted at once; where there are others, the user may choose.
function take(its_files) {
  files = its_files;
  const paths = files.map((f) => f.path).sort((a, b) => isNetwork(b) - isNetwork(a) || a.localeCompare(b));
  byId("network").replaceChildren(...paths.map((path) => new Option(path, path)));
  if (paths.length) run();
}

// Runs

function say(text, bad = false) {
  byId("status").textContent = text;
  byId("status").classList.toggle("bad", bad);
}

function clear() {
  addresses.forEach((it) => URL.revokeObjectURL(it));
  addresses = [];
  byId("outputs").replaceChildren();
  byId("messages").hidden = true;
  byId("messages").textContent = "";
  byId("result").hidden = true;
  byId("result").removeAttribute("srcdoc");
}

function stop() {
  if (worker) worker.terminate();
  worker = null;
  byId("stop").disabled = true;
}

function tell(line) {
  if (PROGRESS.test(line)) return say(line);
  byId("messages").hidden = false;
  byId("messages").textContent += `${line}\n`;
}

const OUTCOMES = { 0: "adjusted", 1: "not adjusted: see the messages", 2: "the input has faults: see the messages", 3: "the program ended early", 4: "adjusted; a test failed" };

function link(path, text, bytes) {
  const it = Object.assign(document.createElement("a"), { textContent: text, download: path.replace(/.*\//, ""), href: address([bytes], "application/octet-stream") });
  it.dataset.path = path;
  return it;
}

function showOutputs(outputs) {
  const words = { [PAGE]: "Page", [REPORT]: "Report", [RESULTS]: "Results as JSON" };
  byId("outputs").replaceChildren(...outputs.map(({ path, bytes }) => link(path, words[path] || path, bytes)));
  const page = outputs.find((o) => o.path === PAGE);
  if (!page) return;
  byId("result").srcdoc = new TextDecoder().decode(page.bytes);
  byId("result").hidden = false;
}

function ended(status, outputs) {
  stop();
  say(`${byId("network").value}: ${OUTCOMES[status] || `status ${status}`}`, status !== 0);
  showOutputs(outputs);
}

function run() {
  stop();
  clear();
  say("starting");
  const options = byId("options").value.trim().split(/\s+/).filter(Boolean);
  const outputs = ["--html", PAGE, "--json", RESULTS, "-o", REPORT];
  worker = new Worker(program);
  worker.onmessage = ({ data }) => ("progress" in data ? tell(data.progress) : ended(data.status, data.outputs));
  worker.onerror = (event) => {
    event.preventDefault();
    tell(event.message);
    ended(3, []);
  };
  byId("stop").disabled = false;
  worker.postMessage({ files, words: ["adjust", `./${byId("network").value}`, ...outputs, ...options] });
}

// Controls

const examples = [...document.querySelectorAll("script[data-example]")].map((s) => ({ path: s.dataset.example, bytes: new TextEncoder().encode(s.textContent) }));
byId("example").append(...examples.filter((e) => isNetwork(e.path) && !e.path.includes("/")).map(({ path }) => new Option(path.replace(/\.inp$/, ""), path)));

function takeExample() {
  const path = byId("example").value, folder = path.replace(/\.inp$/, "/");
  if (path) take(examples.filter((e) => e.path === path || e.path.startsWith(folder)));
}

byId("example").addEventListener("change", takeExample);
byId("files").addEventListener("change", async (event) => {
  take(await Promise.all([...event.target.files].map((file) => ofFile(file, file.name))));
  event.target.value = ""; // so that the same file, mended, can be chosen again
});
byId("task").addEventListener("submit", (event) => {
  event.preventDefault();
  if (files.length) run();
});
byId("network").addEventListener("change", run);
byId("stop").addEventListener("click", () => {
  stop();
  say("stopped", true);
});
document.addEventListener("dragover", (event) => {
  event.preventDefault();
  byId("drop").classList.add("over");
});
document.addEventListener("dragleave", () => byId("drop").classList.remove("over"));
document.addEventListener("drop", async (event) => {
  event.preventDefault();
  byId("drop").classList.remove("over");
  take(await dropped(event.dataTransfer));
});
