// The page: verdict and figures, the plot with its controls, tables, distribution, and what connects them.

function showHead(data) {
  document.title = byId("title").textContent = data.title || `Adjustment of ${data.file}`;
  byId("subtitle").textContent = `${data.file} · ${data.date} · ${data.program} ${data.version}${data.comparison ? "" : `, solver ${data.solver}, mode ${data.mode}`}`;
  byId("origin").textContent = `Lengths in ${data.format.length.name}, angles in ${data.format.angle.name}, residuals and precision in ${data.format.length.small} and ${data.format.angle.small}. `
    + `${data.comparison ? "" : "Residuals are observed less adjusted. "}Made by ${data.program} ${data.version}, ${data.date}; this page asks nothing of any other computer.`;
}

function showVerdict(data, chooseObservation) {
  const box = byId("verdict"), t = data.variance_test;
  const bad = !data.adjusted || (data.comparison && !data.comparison.congruence.passed) || (t && t.squares > t.upper) || data.one_tailed_test === false || data.suspicious.length > 0;
  box.classList.toggle("bad", Boolean(bad));
  box.replaceChildren(...data.verdict.map((line) => element("p", {}, line)));
  if (data.suspicious.length) box.append(element("p", {}, element("button", { type: "button", click: () => chooseObservation(data.suspicious[0]) }, "Show the worst in the plot")));
}

function figures(data) {
  if (data.comparison) return comparisonFigures(data);
  const all = [["points", String(data.points.length)], ["observations", String(data.observations.length)]];
  const leftOut = data.accounts.reduce((n, a) => n + a.left_out.length, 0);
  if (leftOut) all.push(["left out", String(leftOut)]);
  if (isNumber(data.degrees_of_freedom)) all.push(["degrees of freedom", String(data.degrees_of_freedom)]);
  if (isNumber(data.sigma_a_posteriori)) all.push(["sigma of unit weight", decimal(data.sigma_a_posteriori, 3)]);
  const t = data.variance_test;
  if (t) all.push([`sum of squares, limits at level ${t.level.toPrecision(2)}`, `${decimal(t.squares, 1)} (${decimal(t.lower, 1)} to ${decimal(t.upper, 1)}), p ${probability(t.p)}`, t.passed ? "good" : t.squares > t.upper ? "bad" : ""]);
  else if (typeof data.one_tailed_test === "boolean") all.push(["test of sigma", passed(data.one_tailed_test), data.one_tailed_test ? "good" : "bad"]);
  if (data.observations.some((o) => o.tested)) all.push(["suspicious", String(data.suspicious.length), data.suspicious.length ? "bad" : "good"]);
  if (data.tests) all.push(["not checked", String(data.tests.unchecked), data.tests.unchecked ? "bad" : "good"], ["test", data.tests.words, "wide"]);
  if (data.precision) all.push(["precision", (data.precision.a_priori ? "a priori" : `a posteriori, times ${decimal(data.precision.sigma, 3)}`)
    + (data.asked ? `; ellipses of ${data.asked}, ${decimal(data.precision.factor, 3)} times the standard ones` : "")]);
  const closures = data.closures.reduce((n, c) => n + c.found, 0), beyond = data.closures.reduce((n, c) => n + c.beyond_limit, 0);
  if (closures) all.push(["closures beyond limits", `${beyond} of ${closures}`, beyond ? "bad" : "good"]);
  if (isNumber(data.iterations)) all.push(["iterations", String(data.iterations)]);
  if (data.reference_system) all.push(["reference system", data.reference_system, "wide"]);
  if (data.datum) all.push(["datum", data.datum, "wide"]);
  return all;
}

function showSummary(data, chooseObservation) {
  showHead(data);
  showVerdict(data, chooseObservation);
  byId("figures").replaceChildren(...figures(data).map(([name, value, more]) => element("div", { class: more }, element("dt", {}, name), element("dd", {}, value))));
  byId("words").hidden = !data.words.length;
  byId("words").replaceChildren(...data.words.map((line) => element("p", {}, line)));
  byId("notes").hidden = !data.notes.length;
  byId("notes").querySelector("summary").textContent = `${data.notes.length} note${data.notes.length === 1 ? "" : "s"} of the program`;
  byId("notes").querySelector("ul").replaceChildren(...data.notes.map((line) => element("li", {}, line)));
}

function showMethods(data) {
  const squares = data.solver !== "simplex", compared = Boolean(data.comparison);
  const epochs = compared && !data.comparison.control, control = compared && !epochs, tau = Boolean(data.tests && data.tests.words.startsWith("Pope"));
  const holds = { compared, epochs, control, tau, squares: squares && !compared, absolute: !squares, precision: data.has.deviation, tests: data.has.w, moves: data.lumps.length > 0, closures: data.closures.length > 0, diagram: data.dimension === 1 };
  for (const part of document.querySelectorAll("[data-if]")) part.hidden = !holds[part.dataset.if];
  byId("ellipse-factor").textContent = decimal(data.wider, 2);
  byId("limit-one").textContent = decimal(data.limits.one, 2);
  byId("limit-largest").textContent = decimal(data.limits.largest, 2);
}

// Light and dark

const dark = window.matchMedia("(prefers-color-scheme: dark)");
let theme = "auto";

function applyTheme(plot) {
  document.documentElement.dataset.theme = theme === "auto" ? (dark.matches ? "dark" : "light") : theme;
  byId("theme").textContent = { auto: "Theme: system", light: "Theme: light", dark: "Theme: dark" }[theme];
  if (plot) plot.repaint();
}

function themeControl(plot) {
  byId("theme").addEventListener("click", () => {
    theme = { auto: "light", light: "dark", dark: "auto" }[theme];
    applyTheme(plot);
  });
  dark.addEventListener("change", () => applyTheme(plot));
}

// Controls of the plot

function check(words, on, act, id) {
  return element("label", {}, element("input", { type: "checkbox", id, checked: on, change: (e) => act(e.target.checked) }), ` ${words}`);
}

function layerControls(plot) {
  const { data } = plot, layer = (key, words) => check(words, plot.shown[key], (on) => {
    plot.shown[key] = on;
    plot.repaint();
    showLegend(plot);
  }, `layer-${key}`);
  const parts = [layer("names", "names")];
  if (data.has.ellipse) parts.push(layer("ellipses", "ellipses"));
  if (data.has.ellipse && !data.asked) parts.push(check("95 %", false, (on) => { plot.confidence = on ? data.wider : 1; plot.repaint(); showLegend(plot); }, "confidence"));
  else if (data.dimension === 1 && data.has.deviation) { plot.shown.ellipses = true; parts.push(layer("ellipses", "standard deviations")); }
  if (data.pairs.length) parts.push(layer("pairs", "relative ellipses"));
  if (data.has.shift && data.dimension > 1) parts.push(layer("shifts", "shifts"));
  if (data.has.moves) parts.push(layer("moves", data.comparison ? "shifts" : "movements"));
  if (plot.epochs.size > 1)
    for (const epoch of plot.epochs) parts.push(check(`epoch ${epoch}`, true, (on) => { plot.epochs[on ? "add" : "delete"](epoch); plot.repaint(); }, `epoch-${epoch}`));
  if (data.has.ellipse || data.has.shift || data.has.moves)
    parts.push(element("label", { title: "Size of ellipses and arrows" }, "size ", element("input", { type: "range", id: "size", min: -2, max: 2, step: 0.1, value: 0, "aria-label": "Size of ellipses and arrows",
      input: (e) => { plot.size = 10 ** Number(e.target.value / 2); plot.repaint(); } })));
  if (data.kindNames.length > 1)
    for (const kind of data.kindNames.filter((k) => data.observations.some((o) => o.kind === k && o.ends[0][0] >= 0 && o.ends[0][1] >= 0)))
      parts.push(check(`${kind}s`, true, (on) => { plot.kinds[on ? "add" : "delete"](kind); plot.classify(); showLegend(plot); }));
  byId("layers").replaceChildren(...parts);
}

function viewControls(plot) {
  const show = () => {
    byId("views").replaceChildren(...plot.views.map((view, i) => element("button", { type: "button", "aria-pressed": String(i === plot.viewIndex), click: () => { plot.setView(i); show(); showLegend(plot); } }, view.title)));
    byId("turn-label").hidden = plot.data.dimension === 1 || plot.view.title !== "plan";
    byId("raised-label").hidden = plot.view.up !== 2;
  };
  byId("views").hidden = plot.views.length < 2;
  byId("turn").checked = plot.yUp;
  byId("turn").addEventListener("change", (e) => {
    plot.yUp = e.target.checked;
    plot.setViews(plot.viewIndex);
    show();
  });
  byId("raised").addEventListener("change", (e) => {
    plot.raised = Number(e.target.value);
    plot.setViews(plot.viewIndex);
    show();
  });
  show();
}

function measureControl(plot) {
  const there = Object.keys(MEASURES).filter((m) => plot.data.has[m]);
  byId("measure").replaceChildren(...there.map((m) => element("option", { value: m, selected: m === plot.measure }, MEASURES[m].title)));
  byId("measure").parentElement.hidden = there.length < 2;
  byId("measure").addEventListener("change", (e) => {
    plot.measure = e.target.value;
    plot.classify();
    showLegend(plot);
  });
}

function tooltip(plot, what, place) {
  const tip = byId("tip"), { data } = plot;
  tip.hidden = !what || (what.point < 0 && !what.line);
  plot.canvas.style.cursor = tip.hidden ? "" : "pointer";
  if (tip.hidden) return;
  if (what.point >= 0) {
    const p = data.points[what.point];
    tip.textContent = `${p.name} (${p.role})\n${data.axes.map((k) => `${AXES[k]} ${data.format.metric(p.x[k])}`).join("\n")}`;
  } else {
    const { line } = what, n = line.observations.length;
    tip.textContent = `${data.points[line.a].name} – ${data.points[line.b].name}\n${n} observation${n === 1 ? "" : "s"}${isNumber(line.worst) ? `, ${MEASURES[plot.measure].title} ${decimal(line.worst, 2)}` : ""}`;
  }
  tip.style.left = `${Math.min(place[0] + 14, plot.width - tip.offsetWidth - 4)}px`;
  tip.style.top = `${Math.min(place[1] + 14, plot.height - tip.offsetHeight - 4)}px`;
}

// Tables

function tableControls(data, tables) {
  const filter = byId("filter");
  let current = tables[0];
  const count = () => {
    byId("count").textContent = current.shown.length === current.rows.length ? `${current.rows.length} rows` : `${current.shown.length} of ${current.rows.length} rows`;
  };
  const open = (table) => {
    current = table;
    for (const t of tables) {
      t.window.hidden = t !== table;
      t.tab.setAttribute("aria-selected", String(t === table));
    }
    filter.value = table.filter;
    table.draw(true);
    count();
  };
  for (const t of tables) {
    t.changed = count;
    t.tab = element("button", { type: "button", role: "tab", click: () => open(t) }, `${t.name} ${t.rows.length}`);
  }
  byId("tabs").replaceChildren(...tables.map((t) => t.tab));
  byId("tables").replaceChildren(...tables.map((t) => t.element));
  filter.addEventListener("input", () => current.setFilter(filter.value));
  byId("save-csv").addEventListener("click", () => save(`${current.name.toLowerCase().replace(" ", "_")}.csv`, "text/csv", current.csv()));
  if (current) open(current);
  return open;
}

// Print: light, every table with its rows, the plot as it stands.
function printControls(plot, tables) {
  let before = theme;
  window.addEventListener("beforeprint", () => {
    before = theme;
    theme = "light";
    applyTheme(null);
    tables.forEach((t) => t.print());
    plot.setSize(690, 510, 3); // the box of the style sheet on paper
    plot.paintAll();
  });
  window.addEventListener("afterprint", () => {
    theme = before;
    tables.forEach((t) => t.unprint());
    applyTheme(plot);
    plot.resize();
  });
  byId("print").addEventListener("click", () => window.print());
}

function start() {
  applyTheme(null);
  const data = new Data(JSON.parse(byId("results").textContent));
  const plot = new Plot(byId("plot"), data);
  byId("plot").plot = plot;

  const details = (...parts) => byId("details").replaceChildren(...parts.flat().filter(Boolean));
  const lineOf = (o) => plot.lines.find((l) => o.ends.some(([a, b]) => (l.a === a && l.b === b) || (l.a === b && l.b === a))) || null;
  const tableNamed = (name) => tables.find((t) => t.name === name);
  const choosePoint = (p) => {
    plot.choose(p.index, null);
    plot.reveal([p.index]);
    tableNamed("Points").show(p);
    details(pointDetails(data, p, chooseObservation));
  };
  const chooseObservation = (o) => {
    const line = lineOf(o);
    plot.choose(line ? -1 : o.a, line);
    plot.reveal(line ? o.ends.flat() : [o.a].filter((i) => i >= 0));
    openTable(tableNamed("Observations"));
    tableNamed("Observations").show(o);
    details(observationDetails(data, o), line && line.observations.length > 1 ? [element("h3", {}, "On the same line"), observationTable(data, line.observations, chooseObservation)] : []);
  };
  const chooseLine = (line) => {
    if (line.observations.length === 1) { chooseObservation(line.observations[0]); return; }
    plot.choose(-1, line);
    details(lineDetails(data, line, chooseObservation));
  };
  const clear = () => { plot.choose(-1, null); details(data.comparison ? shiftDetails(data, choosePoint) : worstDetails(data, chooseObservation)); };
  const tables = makeTables(data, choosePoint, chooseObservation);
  const openTable = tableControls(data, tables);

  clear();
  showSummary(data, chooseObservation);
  showMethods(data);
  layerControls(plot);
  viewControls(plot);
  measureControl(plot);
  showLegend(plot);
  themeControl(plot);
  printControls(plot, tables);
  makeSearch(data.points, (p) => {
    choosePoint(p);
    if (plot.at[p.index]) plot.centre(...plot.at[p.index], Math.max(plot.transform.scale, Math.min(plot.fitted * 3, plot.fitted * Math.sqrt(data.points.length) / 3)));
    byId("plot").focus({ preventScroll: true });
  });

  plot.on("hover", (what, place) => tooltip(plot, what, place));
  plot.on("pick", (what) => {
    if (what.point >= 0) choosePoint(data.points[what.point]);
    else if (what.line) chooseLine(what.line);
    else clear();
  });
  byId("closer").addEventListener("click", () => plot.zoom(1.4));
  byId("further").addEventListener("click", () => plot.zoom(1 / 1.4));
  byId("all").addEventListener("click", () => plot.fit());
  byId("save-svg").addEventListener("click", () => save("network.svg", "image/svg+xml", drawingOf(plot)));

  let next = 0;
  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || /^(INPUT|SELECT|TEXTAREA)$/.test(event.target.tagName)) return;
    if (event.key === "/") { event.preventDefault(); byId("search").focus(); }
    if (event.key === "Escape") clear();
    if (event.key === "n" && data.suspicious.length) chooseObservation(data.suspicious[next++ % data.suspicious.length]);
  });

  byId("spread").hidden = !data.observations.some((o) => isNumber(o.w));
  document.querySelector('a[href="#spread"]').hidden = byId("spread").hidden;
  if (byId("spread").hidden) return;
  const kinds = data.kindNames.filter((k) => data.observations.some((o) => o.kind === k && isNumber(o.w)));
  byId("spread-kind").replaceChildren(element("option", { value: "" }, "all kinds"), ...kinds.map((k) => element("option", { value: k }, `${k}s`)));
  byId("spread-kind").addEventListener("change", (e) => showDistribution(data, e.target.value, chooseObservation));
  // Where it is seen: it takes longer than all else.
  const first = new IntersectionObserver((seen) => {
    if (!seen.some((s) => s.isIntersecting)) return;
    first.disconnect();
    showDistribution(data, byId("spread-kind").value, chooseObservation);
  }, { rootMargin: "300px" });
  first.observe(byId("spread"));
  window.addEventListener("beforeprint", () => showDistribution(data, byId("spread-kind").value, chooseObservation));
}

start();
