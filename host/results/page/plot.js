// The network plot on a canvas: lines, ellipses, shifts, movements, points and names under a transform of metres to
// pixels. Small networks are painted anew for every frame. Large ones are painted in slices on a layer wider than the
// window, which is moved and scaled while the user pans, until the next one is complete.

const SMALL_SCENE = 4000; // lines and points painted in one frame
const SLICE = 7;          // milliseconds of painting in a frame
const MARGIN = 0.3;       // of the window, on each side of the layer
const BATCH = 300;        // lines of one path: longer paths take more than their share of time

// Where a place in metres lies in pixels.
class Transform {
  constructor(cu, cv, scale, width, height) { Object.assign(this, { cu, cv, scale, width, height }); }
  x(u) { return (u - this.cu) * this.scale + this.width / 2; }
  y(v) { return this.height / 2 - (v - this.cv) * this.scale; }
  u(x) { return (x - this.width / 2) / this.scale + this.cu; }
  v(y) { return (this.height / 2 - y) / this.scale + this.cv; }
}

class Plot {
  constructor(canvas, data) {
    this.canvas = canvas;
    this.data = data;
    this.lines = collectLines(data);
    this.shown = { ellipses: data.has.ellipse, pairs: data.pairs.length > 0, shifts: false, moves: data.has.moves, names: true };
    this.measure = data.has.w ? "w" : data.has.ratio ? "ratio" : "r";
    this.kinds = new Set(data.kindNames);
    this.confidence = 1;
    this.epochs = new Set(data.points.flatMap((p) => p.moves.map((m) => m.epoch))); // whose movements are shown
    this.size = 1; // of ellipses and vectors, over the automatic one
    this.chosen = { point: -1, line: null };
    this.yUp = startsWithYUp(data);
    this.raised = 1; // heights in elevations, over distances
    this.listeners = {};
    this.setViews(0);
    new ResizeObserver(() => this.resize()).observe(canvas.parentElement);
    this.listen();
    this.resize();
    this.fit();
  }

  on(event, act) { this.listeners[event] = act; }
  tell(event, ...what) { if (this.listeners[event]) this.listeners[event](...what); }

  // Views and classes

  setViews(index) {
    this.views = makeViews(this.data, this.lines, this.yUp, this.raised);
    this.setView(Math.min(index, this.views.length - 1));
  }

  setView(index) {
    this.viewIndex = index;
    this.view = this.views[index];
    this.at = this.data.points.map((p) => {
      const [u, v] = this.view.place(p);
      return isNumber(u) && isNumber(v) ? [u, v] : null;
    });
    this.classify();
    this.setVectorScales();
    if (this.transform) this.fit();
  }

  classify() {
    const measure = MEASURES[this.measure], limit = this.data.limits.largest;
    this.classes = classesOf(this.measure, limit);
    const worse = this.classes.falling ? Math.min : Math.max;
    this.byClass = [[], [], [], [], []]; // the last: without a value
    for (const line of this.lines) {
      let worst = null, any = line.observations.length === 0;
      for (const o of line.observations) {
        if (!this.kinds.has(o.kind)) continue;
        any = true;
        const value = measure.of(o);
        if (isNumber(value)) worst = worst === null ? measure.size(value) : worse(worst, measure.size(value));
      }
      line.worst = worst;
      line.class = any ? classOf(this.classes, worst) : null;
      if (any) this.byClass[line.class < 0 ? 4 : line.class].push(line);
    }
    this.repaint();
  }

  // How long the larger ellipses, shifts and movements of the view are, in metres.
  setVectorScales() {
    const large = (sizes) => {
      const sorted = sizes.filter((s) => s > 0).sort((a, b) => a - b);
      return sorted.length ? sorted[Math.floor(0.85 * (sorted.length - 1))] : 0;
    };
    const bounded = (sizes) => sizes.reduce((most, s) => Math.max(most, s / 5), large(sizes)); // one far movement fits in the window too
    const { points, pairs } = this.data, plane = this.view.plane;
    const axes = [...points, ...pairs].map((p) => (plane >= 0 && p.ellipse[plane] ? p.ellipse[plane].a : this.view.bar === 2 ? p.deviation[2] || 0 : 0));
    const length = (d) => Math.hypot(...this.view.vector(d));
    this.large = {
      ellipses: large(axes),
      shifts: large(points.map((p) => length(p.shift))),
      moves: bounded(points.flatMap((p) => p.moves.map((m) => Math.max(length(m.by), plane === 0 && m.ellipse ? m.ellipse.a : 0)))),
    };
  }

  // Mean distance of neighbouring points in pixels.
  spacing(t) {
    return Math.sqrt((0.6 * this.width * this.height) / Math.max(1, this.data.points.length)) * (t.scale / this.fitted);
  }

  // Pixels for a metre of ellipses, shifts or movements: the larger ones measure half the distance between points, within
  // limits. Rounded, so that it stays the same over a range of zooming.
  vectorScale(key, t = this.transform) {
    if (!(this.large[key] > 0)) return 0;
    const most = key === "ellipses" ? 20 : 45, pixels = Math.min(most, Math.max(2.5, 0.4 * this.spacing(t)));
    return (1 / roundLength(this.large[key] / pixels)) * this.size;
  }

  // Movements of the window

  resize() {
    const box = this.canvas.parentElement.getBoundingClientRect();
    this.setSize(Math.max(50, box.width), Math.max(50, box.height), Math.min(window.devicePixelRatio || 1, 2));
  }

  // The whole stays whole; of a part the middle stays, as large as the window, and as before when that is as before.
  setSize(width, height, ratio) {
    const t = this.transform, k = t ? Math.min(width, height) / Math.min(t.width, t.height) : 1;
    Object.assign(this, { width, height, ratio });
    this.canvas.width = Math.round(width * ratio);
    this.canvas.height = Math.round(height * ratio);
    if (!t) return;
    if (this.whole) return this.fit();
    this.fitted *= k;
    this.setTransform(t.cu, t.cv, t.scale * k);
    this.repaint();
  }

  setTransform(cu, cv, scale) { this.transform = new Transform(cu, cv, scale, this.width, this.height); }

  fit() {
    let [u0, u1, v0, v1] = [Infinity, -Infinity, Infinity, -Infinity];
    for (const place of this.at) {
      if (!place) continue;
      u0 = Math.min(u0, place[0]); u1 = Math.max(u1, place[0]);
      v0 = Math.min(v0, place[1]); v1 = Math.max(v1, place[1]);
    }
    if (u0 > u1) [u0, u1, v0, v1] = [0, 1, 0, 1];
    const border = Math.min(90, 0.12 * this.width);
    const scale = Math.min((this.width - 2 * border) / (u1 - u0 || 1e-9), (this.height - 2 * Math.min(60, border)) / (v1 - v0 || 1e-9), 1e6);
    this.fitted = scale;
    this.whole = true;
    this.setTransform((u0 + u1) / 2, (v0 + v1) / 2, scale);
    this.makeRoom();
    this.repaint();
  }

  // Shrinks the whole until the tips of the movements are inside. Their lengths in pixels stay.
  makeRoom() {
    const t = this.transform, vectors = this.vectorScale("moves"), middle = [t.width / 2, t.height / 2];
    let room = 1;
    for (const p of this.data.points)
      for (const m of this.at[p.index] ? p.moves : []) {
        const place = this.at[p.index], by = this.view.vector(m.by), around = m.ellipse ? m.ellipse.a : 0;
        [(place[0] - t.cu) * t.scale, (place[1] - t.cv) * t.scale].forEach((x, k) => {
          const beyond = (Math.sign(x) * by[k] + around) * vectors;
          if (Math.abs(x) + beyond > middle[k] - 8) room = Math.min(room, (middle[k] - 8 - beyond) / Math.abs(x));
        });
      }
    this.fitted *= Math.max(room, 0.4);
    this.setTransform(t.cu, t.cv, this.fitted);
  }

  pan(dx, dy) {
    const t = this.transform;
    this.centre(t.cu - dx / t.scale, t.cv + dy / t.scale);
  }

  zoom(factor, x = this.width / 2, y = this.height / 2) {
    const t = this.transform, scale = Math.min(Math.max(t.scale * factor, this.fitted / 20), this.fitted * 1e5);
    const u = t.u(x), v = t.v(y);
    this.centre(u - (x - t.width / 2) / scale, v + (y - t.height / 2) / scale, scale);
  }

  centre(u, v, scale = this.transform.scale) {
    this.whole = false;
    this.setTransform(u, v, scale);
    this.request();
  }

  // Brings a point into the window where it is outside.
  reveal(indexes) {
    const inside = (i) => {
      const [x, y] = this.screen(i) || [0, 0];
      return x > 20 && y > 20 && x < this.width - 20 && y < this.height - 20;
    };
    const places = indexes.map((i) => this.at[i]).filter(Boolean);
    if (!places.length || indexes.filter((i) => this.at[i]).every(inside)) return;
    const [u, v] = [0, 1].map((k) => places.reduce((sum, p) => sum + p[k], 0) / places.length);
    const span = Math.max(...places.map((p) => Math.hypot(p[0] - u, p[1] - v)));
    const most = span > 0 ? (0.4 * Math.min(this.width, this.height)) / span : Infinity;
    this.centre(u, v, Math.min(this.transform.scale, most));
  }

  screen(point) {
    const place = this.at[point];
    return place ? [this.transform.x(place[0]), this.transform.y(place[1])] : null;
  }

  // Painting

  repaint() {
    this.colours = themeColours();
    this.layer = null; // what is on it is no longer right
    this.job = null;
    this.request();
  }

  request() {
    if (this.pending) return;
    this.pending = true;
    requestAnimationFrame(() => {
      this.pending = false;
      this.frame();
    });
  }

  frame() {
    if (!this.transform) return;
    if (this.lines.length + this.data.points.length <= SMALL_SCENE) this.paintNow();
    else this.paintLayered();
  }

  begin(ctx) {
    ctx.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
    ctx.clearRect(0, 0, this.width, this.height);
  }

  paintNow() {
    const ctx = this.canvas.getContext("2d");
    this.begin(ctx);
    for (const step of paintScene(ctx, this, this.transform)) void step;
    paintFrame(ctx, this);
    this.tell("painted");
  }

  paintLayered() {
    const ctx = this.canvas.getContext("2d"), t = this.transform;
    this.begin(ctx);
    if (this.layer) {
      const { transform: l, image } = this.layer, k = t.scale / l.scale;
      ctx.imageSmoothingEnabled = false;
      ctx.drawImage(image, t.x(l.u(0)), t.y(l.v(0)), l.width * k, l.height * k);
    }
    paintFrame(ctx, this);
    if (!this.job && !this.isCurrent(this.layer)) this.startJob();
    if (this.job) this.continueJob();
  }

  // Whether a layer has the scale of the window and covers it.
  isCurrent(layer) {
    if (!layer) return false;
    const { transform: l } = layer, t = this.transform;
    if (l.scale !== t.scale) return false;
    const x = t.x(l.u(0)), y = t.y(l.v(0));
    return x <= 0.5 && y <= 0.5 && x + l.width >= t.width - 0.5 && y + l.height >= t.height - 0.5;
  }

  startJob() {
    const t = this.transform;
    const transform = new Transform(t.cu, t.cv, t.scale, Math.round(t.width * (1 + 2 * MARGIN)), Math.round(t.height * (1 + 2 * MARGIN)));
    const canvas = new OffscreenCanvas(transform.width * this.ratio, transform.height * this.ratio);
    const ctx = canvas.getContext("2d", { willReadFrequently: true });
    ctx.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
    this.job = { canvas, ctx, transform, steps: paintScene(ctx, this, transform) };
  }

  // Reading a pixel lets the browser do at once what it would save up for the end of the frame, so that the clock tells
  // what a step takes.

  continueJob() {
    const end = performance.now() + SLICE;
    while (performance.now() < end) {
      const { done } = this.job.steps.next();
      this.job.ctx.getImageData(0, 0, 1, 1);
      if (!done) continue;
      this.layer = { image: this.job.canvas.transferToImageBitmap(), transform: this.job.transform };
      this.job = null;
      this.tell("painted");
      break;
    }
    this.request();
  }

  // Complete at once: for print and pictures.
  paintAll() {
    const ctx = this.canvas.getContext("2d");
    this.begin(ctx);
    for (const step of paintScene(ctx, this, this.transform)) void step;
    paintFrame(ctx, this);
  }

  // Choice

  choose(point, line) {
    this.chosen = { point, line };
    this.request();
  }

  nearestPoint(x, y) {
    let best = -1, least = 10 * 10;
    this.at.forEach((place, i) => {
      if (!place) return;
      const d = (this.transform.x(place[0]) - x) ** 2 + (this.transform.y(place[1]) - y) ** 2;
      if (d < least) { least = d; best = i; }
    });
    return best;
  }

  nearestLine(x, y) {
    let best = null, least = 6;
    const t = this.transform;
    for (const line of this.lines) {
      if (line.class === null) continue;
      const p = this.at[line.a], q = this.at[line.b];
      if (!p || !q) continue;
      const ax = t.x(p[0]), ay = t.y(p[1]), dx = t.x(q[0]) - ax, dy = t.y(q[1]) - ay;
      const s = Math.min(1, Math.max(0, ((x - ax) * dx + (y - ay) * dy) / (dx * dx + dy * dy || 1)));
      const d = Math.hypot(x - ax - s * dx, y - ay - s * dy);
      if (d < least) { least = d; best = line; }
    }
    return best;
  }

  pick(x, y) {
    const point = this.nearestPoint(x, y);
    return point >= 0 ? { point, line: null } : { point: -1, line: this.nearestLine(x, y) };
  }

  listen() {
    const canvas = this.canvas, fingers = new Map();
    let moved = 0, hover = null;
    const place = (event) => {
      const box = canvas.getBoundingClientRect();
      return [event.clientX - box.left, event.clientY - box.top];
    };
    canvas.addEventListener("pointerdown", (event) => {
      fingers.set(event.pointerId, place(event));
      moved = 0;
      try { canvas.setPointerCapture(event.pointerId); } catch { /* a pointer that is not there any more */ }
    });
    canvas.addEventListener("pointermove", (event) => {
      const [x, y] = place(event), before = fingers.get(event.pointerId);
      if (!before) {
        if (!hover) requestAnimationFrame(() => { this.tell("hover", hover && this.pick(...hover), hover); hover = null; });
        hover = [x, y];
        return;
      }
      const others = [...fingers].filter(([id]) => id !== event.pointerId).map(([, p]) => p);
      moved += Math.hypot(x - before[0], y - before[1]);
      if (others.length) {
        const [ox, oy] = others[0];
        this.zoom((Math.hypot(x - ox, y - oy) || 1) / (Math.hypot(before[0] - ox, before[1] - oy) || 1), ox, oy);
      } else if (moved > 3) this.pan(x - before[0], y - before[1]);
      fingers.set(event.pointerId, [x, y]);
      this.tell("hover", null);
    });
    const release = (event) => {
      if (event.type === "pointerup" && fingers.size === 1 && moved <= 3) this.tell("pick", this.pick(...place(event)));
      fingers.delete(event.pointerId);
    };
    canvas.addEventListener("pointerup", release);
    canvas.addEventListener("pointercancel", release);
    canvas.addEventListener("pointerleave", () => { hover = null; this.tell("hover", null); });
    canvas.addEventListener("wheel", (event) => {
      event.preventDefault();
      const step = event.deltaMode === 1 ? 30 * event.deltaY : event.deltaY;
      this.zoom(Math.exp(-Math.max(-200, Math.min(200, step)) / 400), ...place(event));
    }, { passive: false });
    canvas.addEventListener("keydown", (event) => {
      const far = 0.12 * Math.min(this.width, this.height);
      const acts = {
        ArrowLeft: () => this.pan(far, 0), ArrowRight: () => this.pan(-far, 0), ArrowUp: () => this.pan(0, far), ArrowDown: () => this.pan(0, -far),
        "+": () => this.zoom(1.4), "=": () => this.zoom(1.4), "-": () => this.zoom(1 / 1.4), 0: () => this.fit(), Home: () => this.fit(),
      };
      if (!acts[event.key] || event.ctrlKey || event.metaKey || event.altKey) return;
      event.preventDefault();
      acts[event.key]();
    });
  }
}
