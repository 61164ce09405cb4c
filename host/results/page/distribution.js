// Histogram and normal quantile plot of normalised residuals, as drawings that print sharply.

const WIDE = 460, HIGH = 250, LEFT = 42, BELOW = 26;

// Quantile of the normal distribution: M. J. Wichura, Algorithm AS 241, Applied Statistics 37 (1988), PPND7, seven digits.
function normalQuantile(p) {
  const q = p - 0.5;
  if (Math.abs(q) <= 0.425) {
    const r = 0.180625 - q * q;
    return (q * (((59.10937472 * r + 159.29113202) * r + 50.434271938) * r + 3.3871327179)) / (((67.1875636 * r + 78.757757664) * r + 17.895169469) * r + 1);
  }
  let r = Math.sqrt(-Math.log(Math.min(p, 1 - p)));
  let x;
  if (r <= 5) {
    r -= 1.6;
    x = (((0.17023821103 * r + 1.3067284816) * r + 2.75681539) * r + 1.4234372777) / ((0.12021132975 * r + 0.7370016425) * r + 1);
  } else {
    r -= 5;
    x = (((0.017337203997 * r + 0.42868294337) * r + 3.081226386) * r + 6.657905115) / ((0.012258202635 * r + 0.24197894225) * r + 1);
  }
  return q < 0 ? -x : x;
}

const density = (x) => Math.exp(-0.5 * x * x) / Math.sqrt(TURN);

function frame(x, y, xTicks, yTicks, label) {
  const svg = drawn("svg", { viewBox: `0 0 ${WIDE} ${HIGH}`, role: "img", "aria-label": label });
  for (const t of xTicks) {
    svg.append(drawn("line", { x1: x(t), x2: x(t), y1: 8, y2: HIGH - BELOW, stroke: "var(--grid)" }),
      drawn("text", { x: x(t), y: HIGH - BELOW + 15, "text-anchor": "middle" }, String(t)));
  }
  for (const t of yTicks) {
    svg.append(drawn("line", { x1: LEFT, x2: WIDE - 6, y1: y(t), y2: y(t), stroke: "var(--grid)" }),
      drawn("text", { x: LEFT - 5, y: y(t) + 4, "text-anchor": "end" }, String(t)));
  }
  return svg;
}

// Up to n round numbers from low to high.
function ticks(low, high, n) {
  const step = [1, 2, 5, 10].map((k) => k * 10 ** Math.floor(Math.log10((high - low) / n || 1))).find((s) => (high - low) / s <= n) || 1;
  const all = [];
  for (let i = Math.ceil(low / step); i * step <= high + 1e-9; i++) all.push(Number((i * step).toPrecision(6)));
  return all;
}

const polyline = (places, more) => drawn("polyline", { points: places.map((p) => p.map((c) => c.toFixed(2)).join(",")).join(" "), fill: "none", ...more });

function histogram(values) {
  const width = values.length < 40 ? 1 : values.length < 400 ? 0.5 : 0.25, edge = 5, n = (2 * edge) / width;
  const counts = new Array(n).fill(0);
  for (const w of values) counts[Math.max(0, Math.min(n - 1, Math.floor((w + edge) / width)))]++;
  const expected = (x) => values.length * width * density(x);
  const most = Math.max(1, expected(0), ...counts) * 1.08;
  const x = (w) => LEFT + ((w + edge) / (2 * edge)) * (WIDE - LEFT - 8), y = (c) => HIGH - BELOW - (c / most) * (HIGH - BELOW - 10);
  const svg = frame(x, y, [-5, -4, -3, -2, -1, 0, 1, 2, 3, 4, 5], ticks(0, most, 5), "Histogram of the normalised residuals");
  counts.forEach((c, i) => {
    if (!c) return;
    const w = -edge + i * width, words = i === 0 || i === n - 1 ? "and beyond" : `to ${w + width}`;
    svg.append(drawn("rect", { x: x(w) + 0.5, y: y(c), width: x(w + width) - x(w) - 1, height: HIGH - BELOW - y(c), fill: "var(--class1)", "fill-opacity": 0.75 },
      drawn("title", {}, `${w} ${words}: ${c}`)));
  });
  const curve = Array.from({ length: 121 }, (_, i) => -edge + (i * 2 * edge) / 120).map((w) => [x(w), y(expected(w))]);
  svg.append(polyline(curve, { stroke: "var(--class2)", "stroke-width": 2 }));
  return svg;
}

// Ranks to draw of n: all of few, of many the tails and some between.
function drawnRanks(n) {
  if (n <= 1500) return Array.from({ length: n }, (_, i) => i);
  const all = new Set();
  for (let i = 0; i < 250; i++) { all.add(i); all.add(n - 1 - i); }
  for (let i = 0; i < 1000; i++) all.add(Math.round((i * (n - 1)) / 999));
  return [...all].sort((a, b) => a - b);
}

// The band: standard deviation of an order statistic, sqrt(p (1 - p) / n) / density, 1.96 times.
function quantilePlot(values, chosen) {
  const sorted = values.slice().sort((a, b) => a.w - b.w), n = sorted.length;
  const ranks = drawnRanks(n), probability = (i) => (i + 0.5) / n;
  const reach = Math.max(3, Math.min(12, Math.ceil(Math.max(Math.abs(sorted[0].w), Math.abs(sorted[n - 1].w)))));
  const wide = Math.max(2.5, normalQuantile(probability(n - 1)) + 0.3);
  const x = (z) => LEFT + ((z + wide) / (2 * wide)) * (WIDE - LEFT - 8);
  const y = (w) => HIGH - BELOW - ((Math.max(-reach, Math.min(reach, w)) + reach) / (2 * reach)) * (HIGH - BELOW - 10);
  const svg = frame(x, y, ticks(-wide, wide, 8), ticks(-reach, reach, 8), "Ordered normalised residuals against normal quantiles");
  const band = (sign) => ranks.map((i) => {
    const p = probability(i), z = normalQuantile(p);
    return [x(z), y(z + (sign * 1.96 * Math.sqrt((p * (1 - p)) / n)) / density(z))];
  });
  svg.append(drawn("polygon", { points: [...band(1), ...band(-1).reverse()].map((p) => p.map((c) => c.toFixed(2)).join(",")).join(" "), fill: "var(--class2)", "fill-opacity": 0.22 }));
  svg.append(polyline([[x(-wide), y(-wide)], [x(wide), y(wide)]], { stroke: "var(--class2)", "stroke-width": 1.5 }));
  for (const i of ranks) {
    const o = sorted[i], suspicious = o.marks & SUSPICIOUS;
    const dot = drawn("circle", { cx: x(normalQuantile(probability(i))).toFixed(2), cy: y(o.w).toFixed(2), r: suspicious ? 4 : 2.4, fill: suspicious ? "var(--class3)" : "var(--class1)", style: "cursor:pointer" },
      drawn("title", {}, `${o.name}: ${decimal(o.w, 2)}`));
    dot.addEventListener("click", () => chosen(o));
    svg.append(dot);
  }
  return svg;
}

function showDistribution(data, kind, chosen) {
  const tested = data.observations.filter((o) => isNumber(o.w) && (!kind || o.kind === kind));
  byId("spread-count").textContent = `${tested.length} residuals`;
  byId("histogram").replaceChildren(histogram(tested.map((o) => o.w)));
  byId("quantiles").replaceChildren(quantilePlot(tested, chosen));
}
