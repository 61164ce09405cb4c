// Paints a plot on anything that takes the calls of a canvas: steps of some hundred lines or points, so that a long
// painting can be spread over frames.

const FONT = "12px system-ui, 'DejaVu Sans', sans-serif";

function outside(t, p, q) {
  const x0 = t.x(p[0]), x1 = t.x(q[0]), y0 = t.y(p[1]), y1 = t.y(q[1]);
  return (x0 < 0 && x1 < 0) || (y0 < 0 && y1 < 0) || (x0 > t.width && x1 > t.width) || (y0 > t.height && y1 > t.height);
}

function inWindow(t, p, border = 30) {
  const x = t.x(p[0]), y = t.y(p[1]);
  return x > -border && y > -border && x < t.width + border && y < t.height + border;
}

function* paintScene(ctx, plot, t) {
  const { colours } = plot;
  yield* paintLines(ctx, plot, t, colours, [4, 0, 1, 2]);
  if (plot.shown.pairs) yield* paintPairs(ctx, plot, t, colours);
  if (plot.shown.ellipses) yield* paintEllipses(ctx, plot, t, colours);
  if (plot.shown.shifts) yield* paintVectors(ctx, plot, t, colours.shift, (p) => [p.shift], plot.vectorScale("shifts", t));
  if (plot.shown.moves) yield* paintMoves(ctx, plot, t, colours, plot.vectorScale("moves", t));
  yield* paintLines(ctx, plot, t, colours, [3]);
  yield* paintPoints(ctx, plot, t, colours);
  if (plot.shown.names) yield* paintNames(ctx, plot, t, colours);
}

// Lines of some classes; thinner where points are dense, but for the worst.
function* paintLines(ctx, plot, t, colours, classes) {
  const thin = Math.min(1, Math.max(0.3, plot.spacing(t) / 40));
  ctx.lineCap = "round";
  for (const c of classes) {
    ctx.strokeStyle = c === 4 ? colours.none : colours.classes[c];
    ctx.lineWidth = c === 4 ? thin : c === 3 ? Math.max(2.4, WIDTHS[3] * thin) : WIDTHS[c] * thin;
    ctx.setLineDash(c === 4 ? [3, 4] : []);
    let drawn = 0;
    ctx.beginPath();
    for (const line of plot.byClass[c]) {
      const p = plot.at[line.a], q = plot.at[line.b];
      if (!p || !q || outside(t, p, q)) continue;
      ctx.moveTo(t.x(p[0]), t.y(p[1]));
      ctx.lineTo(t.x(q[0]), t.y(q[1]));
      if (++drawn % BATCH) continue;
      ctx.stroke();
      yield;
      ctx.beginPath();
    }
    ctx.stroke();
    yield;
  }
  ctx.setLineDash([]);
}

function strokeEllipse(ctx, plot, x, y, e, scale) {
  const [dx, dy] = plot.view.direction(e.bearing);
  const k = scale * plot.confidence;
  if (e.a * k < 0.7) return false;
  ctx.beginPath();
  ctx.ellipse(x, y, Math.min(e.a * k, 1e5), Math.max(Math.min(e.b * k, 1e5), 0.01), Math.atan2(-dy, dx), 0, TURN);
  ctx.stroke();
  return true;
}

// In a view of heights a bar of one standard deviation upwards and downwards.
function strokeBar(ctx, x, y, deviation, scale) {
  const h = deviation * scale;
  ctx.beginPath();
  ctx.moveTo(x, y - h); ctx.lineTo(x, y + h);
  for (const end of [y - h, y + h]) { ctx.moveTo(x - 4, end); ctx.lineTo(x + 4, end); }
  ctx.stroke();
}

function* paintEllipses(ctx, plot, t, colours) {
  const { view, data } = plot, scale = plot.vectorScale("ellipses", t);
  ctx.strokeStyle = colours.ellipse;
  ctx.lineWidth = Math.min(1.4, Math.max(0.6, plot.spacing(t) / 30));
  let drawn = 0;
  for (const p of data.points) {
    const place = plot.at[p.index], e = view.plane >= 0 ? p.ellipse[view.plane] : null;
    if (!place || !inWindow(t, place, 60)) continue;
    if (e) strokeEllipse(ctx, plot, t.x(place[0]), t.y(place[1]), e, scale);
    else if (view.bar === 2 && isNumber(p.deviation[2])) strokeBar(ctx, t.x(place[0]), t.y(place[1]), p.deviation[2], scale * (plot.confidence > 1 ? 1.96 : 1));
    if (++drawn % BATCH === 0) yield;
  }
}

// Relative ellipses, half-way between the two points, dashed.
function* paintPairs(ctx, plot, t, colours) {
  const scale = plot.vectorScale("ellipses", t);
  ctx.strokeStyle = colours.ellipse;
  ctx.lineWidth = 1.2;
  ctx.setLineDash([4, 3]);
  for (const pair of plot.data.pairs) {
    const p = plot.at[plot.data.byName.get(pair.from)], q = plot.at[plot.data.byName.get(pair.to)];
    const e = plot.view.plane >= 0 ? pair.ellipse[plot.view.plane] : null;
    if (!p || !q || !e) continue;
    strokeEllipse(ctx, plot, t.x((p[0] + q[0]) / 2), t.y((p[1] + q[1]) / 2), e, scale);
    yield;
  }
  ctx.setLineDash([]);
}

function strokeArrow(ctx, x, y, dx, dy) {
  const length = Math.hypot(dx, dy);
  if (!(length > 1.5) || length > 1e5) return;
  const head = Math.min(7, 0.5 * length), ux = dx / length, uy = dy / length;
  ctx.moveTo(x, y);
  ctx.lineTo(x + dx, y + dy);
  ctx.moveTo(x + dx - head * (ux - 0.45 * uy), y + dy - head * (uy + 0.45 * ux));
  ctx.lineTo(x + dx, y + dy);
  ctx.lineTo(x + dx - head * (ux + 0.45 * uy), y + dy - head * (uy - 0.45 * ux));
}

function* paintVectors(ctx, plot, t, colour, vectorsOf, scale) {
  ctx.strokeStyle = colour;
  ctx.lineWidth = 1.8;
  let drawn = 0;
  for (const p of plot.data.points) {
    const place = plot.at[p.index];
    if (!place || !inWindow(t, place, 80)) continue;
    for (const vector of vectorsOf(p)) {
      const [du, dv] = plot.view.vector(vector);
      ctx.beginPath();
      strokeArrow(ctx, t.x(place[0]), t.y(place[1]), du * scale, -dv * scale);
      ctx.stroke();
    }
    if (++drawn % BATCH === 0) yield;
  }
}

// Where other epochs have the points: an arrow and a dot, dashed where the test says that it may be chance, with the
// confidence ellipse of the movement, and with several epochs the number of each.
function* paintMoves(ctx, plot, t, colours, scale) {
  ctx.lineJoin = "round";
  ctx.font = FONT;
  ctx.textBaseline = "middle";
  ctx.textAlign = "center";
  let drawn = 0;
  for (const p of plot.data.points) {
    const place = plot.at[p.index];
    if (!place || !inWindow(t, place, 80)) continue;
    for (const m of p.moves) if (plot.epochs.has(m.epoch)) paintMove(ctx, plot, m, t.x(place[0]), t.y(place[1]), scale, colours);
    if (++drawn % BATCH === 0) yield;
  }
  ctx.setLineDash([]);
}

function paintMove(ctx, plot, m, x, y, scale, colours) {
  const [du, dv] = plot.view.vector(m.by), dx = du * scale, dy = -dv * scale, chance = m.test && m.test.passed;
  ctx.strokeStyle = ctx.fillStyle = chance ? colours.soft : colours.epoch;
  ctx.lineWidth = chance ? 1.1 : 1.8;
  ctx.setLineDash(chance ? [3, 3] : []);
  ctx.beginPath();
  strokeArrow(ctx, x, y, dx, dy);
  ctx.stroke();
  ctx.lineWidth = 1.1;
  if (m.ellipse && plot.view.plane === 0) strokeEllipse(ctx, plot, x + dx, y + dy, m.ellipse, scale / plot.confidence);
  if (!m.test || Math.hypot(dx, dy) < 1.5) return;
  ctx.setLineDash([]);
  ctx.beginPath();
  ctx.arc(x + dx, y + dy, 2.2, 0, TURN);
  ctx.fill();
  if (plot.data.comparison.epochs.length < 3) return;
  const off = 10 / Math.hypot(dx, dy);
  ctx.fillText(String(m.epoch), x + dx * (1 + off), y + dy * (1 + off));
}

// Triangles are held, filled or half; squares are weighted; circles are free, hollow outside the datum. An instrument
// stands in a ring.
function pathOf(ctx, role, x, y, r) {
  ctx.beginPath();
  if (role === "fixed" || role === "partly fixed") {
    ctx.moveTo(x, y - 1.35 * r); ctx.lineTo(x + 1.25 * r, y + 0.85 * r); ctx.lineTo(x - 1.25 * r, y + 0.85 * r);
    ctx.closePath();
  } else if (role === "weighted") ctx.rect(x - r, y - r, 2 * r, 2 * r);
  else ctx.arc(x, y, r, 0, TURN);
}

function paintPoint(ctx, p, x, y, r, colours) {
  const filled = FILLED.includes(p.role);
  pathOf(ctx, p.role, x, y, r);
  ctx.fillStyle = filled ? colours.point : colours.paper;
  ctx.fill();
  ctx.strokeStyle = colours.point;
  ctx.lineWidth = 1.4;
  ctx.stroke();
  if (!p.station) return;
  ctx.beginPath();
  ctx.arc(x, y, r + 4, 0, TURN);
  ctx.lineWidth = 1;
  ctx.stroke();
}

// Points are smaller where they are dense.
function pointRadius(plot, t) { return Math.max(0.8, Math.min(4, 0.12 * plot.spacing(t))); }

function* paintPoints(ctx, plot, t, colours) {
  const r = pointRadius(plot, t);
  let drawn = 0;
  for (const p of plot.data.points) {
    const place = plot.at[p.index];
    if (!place || !inWindow(t, place)) continue;
    if (r < 2.5) {
      ctx.fillStyle = colours.point;
      const half = p.role === "free" && !p.station ? r : r + 0.8;
      ctx.fillRect(t.x(place[0]) - half, t.y(place[1]) - half, 2 * half, 2 * half);
    } else paintPoint(ctx, p, t.x(place[0]), t.y(place[1]), r, colours);
    if (++drawn % BATCH === 0) yield;
  }
}

// Names where there is room, those of held points and instruments first.
function* paintNames(ctx, plot, t, colours) {
  const cell = 14, taken = new Set(), off = pointRadius(plot, t) + 6;
  const dense = plot.spacing(t) < 28; // only those that hold the network
  const rank = (p) => (p.role === "fixed" ? 0 : p.station ? 1 : 2);
  const visible = plot.data.points.filter((p) => plot.at[p.index] && inWindow(t, plot.at[p.index], 0) && (!dense || p.role === "fixed"));
  const keys = (x, y, w) => {
    const all = [];
    for (let i = Math.floor(x / cell); i <= Math.floor((x + w) / cell); i++)
      for (let j = Math.floor((y - 7) / cell); j <= Math.floor((y + 7) / cell); j++) all.push(i * 65536 + j);
    return all;
  };
  for (const p of visible) {
    const [u, v] = plot.at[p.index];
    taken.add(Math.floor(t.x(u) / cell) * 65536 + Math.floor(t.y(v) / cell));
  }
  visible.sort((p, q) => rank(p) - rank(q));
  ctx.font = FONT;
  ctx.textBaseline = "middle";
  ctx.lineJoin = "round";
  let drawn = 0;
  for (const p of visible) {
    if (drawn > 1500) break;
    const [u, v] = plot.at[p.index], x = t.x(u), y = t.y(v), w = 7 * Math.min(p.name.length, 24);
    const places = [[x + off, y - off, "left"], [x - off - w, y - off, "right"], [x + off, y + off, "left"], [x - off - w, y + off, "right"]];
    const all = places.filter(([left, top]) => keys(left, top, w).every((k) => !taken.has(k)));
    const free = all.find(([left]) => left >= 0 && left + w <= t.width) || all[0]; // whole, where there is such a place
    if (!free) continue;
    for (const key of keys(free[0], free[1], w)) taken.add(key);
    ctx.textAlign = free[2];
    const left = free[2] === "left" ? x + off : x - off;
    ctx.strokeStyle = colours.paper;
    ctx.lineWidth = 3;
    ctx.strokeText(p.name, left, free[1]);
    ctx.fillStyle = colours.ink;
    ctx.fillText(p.name, left, free[1]);
    if (++drawn % 50 === 0) yield;
  }
}

// Above the scene: what is chosen, scales and axes.
function paintFrame(ctx, plot) {
  const { colours } = plot;
  paintChosen(ctx, plot, colours);
  paintScales(ctx, plot, colours);
  if (plot.view.axes) paintAxes(ctx, plot, colours);
}

function paintChosen(ctx, plot, colours) {
  const t = plot.transform, { point, line } = plot.chosen;
  ctx.strokeStyle = colours.pick;
  if (line && plot.at[line.a] && plot.at[line.b]) {
    const p = plot.at[line.a], q = plot.at[line.b];
    ctx.lineWidth = 5;
    ctx.globalAlpha = 0.55;
    ctx.beginPath();
    ctx.moveTo(t.x(p[0]), t.y(p[1]));
    ctx.lineTo(t.x(q[0]), t.y(q[1]));
    ctx.stroke();
    ctx.globalAlpha = 1;
  }
  for (const i of line ? [line.a, line.b] : [point]) {
    if (i < 0 || !plot.at[i]) continue;
    ctx.lineWidth = 2.5;
    ctx.beginPath();
    ctx.arc(t.x(plot.at[i][0]), t.y(plot.at[i][1]), i === point || !line ? 12 : 9, 0, TURN);
    ctx.stroke();
  }
}

// A bar with its length in words; returns the height it took.
function paintBar(ctx, x, y, pixelsPerMetre, colour, words, paper) {
  const length = roundLength(110 / pixelsPerMetre), w = length * pixelsPerMetre;
  ctx.strokeStyle = colour;
  ctx.lineWidth = 2;
  ctx.setLineDash([]);
  ctx.beginPath();
  ctx.moveTo(x, y - 4); ctx.lineTo(x, y); ctx.lineTo(x + w, y); ctx.lineTo(x + w, y - 4);
  ctx.stroke();
  const text = `${lengthText(length)}${words}`;
  ctx.font = FONT;
  ctx.textAlign = "left";
  ctx.textBaseline = "bottom";
  ctx.strokeStyle = paper;
  ctx.lineWidth = 3;
  ctx.strokeText(text, x + 5, y - 3);
  ctx.fillStyle = colour;
  ctx.fillText(text, x + 5, y - 3);
  return 24;
}

function paintScales(ctx, plot, colours) {
  const bars = [];
  if (plot.view.ground) bars.push([plot.transform.scale, colours.ink, plot.view.upOnly ? " of height" : ""]);
  const add = (key, shown, colour, words) => { if (shown && plot.large[key] > 0) bars.push([plot.vectorScale(key), colour, words]); };
  const measure = plot.view.bar === 2 ? " standard deviation" : " in ellipses";
  add("ellipses", plot.shown.ellipses || plot.shown.pairs, colours.ellipse, measure);
  add("shifts", plot.shown.shifts, colours.shift, " in shifts");
  add("moves", plot.shown.moves, colours.epoch, plot.data.comparison ? " in shifts and ellipses" : " in movements");
  let y = plot.height - 12;
  for (const [scale, colour, words] of bars) y -= paintBar(ctx, 14, y, scale, colour, words, colours.paper);
}

// Names of the two axes at the lower right corner.
function paintAxes(ctx, plot, colours) {
  const [right, up] = plot.view.axes, x = plot.width - 58, y = plot.height - 20, length = 32;
  ctx.strokeStyle = colours.soft;
  ctx.fillStyle = colours.soft;
  ctx.lineWidth = 1.5;
  ctx.font = FONT;
  ctx.beginPath();
  strokeArrow(ctx, x, y, 0, -length);
  if (right) strokeArrow(ctx, x, y, length, 0);
  ctx.stroke();
  ctx.textBaseline = "middle";
  ctx.textAlign = "center";
  ctx.fillText(up, x, y - length - 9);
  if (right) ctx.fillText(right, x + length + 9, y);
}
