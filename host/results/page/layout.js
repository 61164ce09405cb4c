// Places for the points of a network without positions, from its lines alone: classical scaling of the graph distances to
// a few pivots (U. Brandes, C. Pich, Eigensolver methods for progressive multidimensional scaling of large data, 2007),
// and, in small networks, steps that bring the distances in the drawing closer to those in the graph.

const PIVOTS = 40;
const SMALL = 300; // points up to which the places are refined

// Steps along lines from a point to all; in other parts of the network one more than the longest.
function hops(neighbours, start) {
  const steps = new Int32Array(neighbours.length).fill(-1);
  const queue = [start];
  steps[start] = 0;
  for (let i = 0; i < queue.length; i++)
    for (const next of neighbours[queue[i]])
      if (steps[next] < 0) {
        steps[next] = steps[queue[i]] + 1;
        queue.push(next);
      }
  const far = steps[queue[queue.length - 1]] + 1;
  return steps.map((s) => (s < 0 ? far : s));
}

// Pivots far from one another: the next is the point farthest from all before.
function pivotDistances(neighbours) {
  const n = neighbours.length, nearest = new Float64Array(n).fill(Infinity), all = [];
  let pivot = 0;
  while (all.length < Math.min(PIVOTS, n)) {
    const steps = hops(neighbours, pivot);
    all.push(steps);
    let next = 0;
    for (let i = 0; i < n; i++) {
      nearest[i] = Math.min(nearest[i], steps[i]);
      if (nearest[i] > nearest[next]) next = i;
    }
    pivot = next;
  }
  return all;
}

// Squared distances with the means of rows and columns taken off, column by column.
function centred(distances, n) {
  const k = distances.length, rows = new Float64Array(n);
  const columns = distances.map((d) => Float64Array.from(d, (x) => x * x));
  const means = columns.map((c) => c.reduce((sum, x) => sum + x, 0) / n);
  for (const c of columns) for (let i = 0; i < n; i++) rows[i] += c[i] / k;
  const whole = means.reduce((sum, m) => sum + m, 0) / k;
  return columns.map((c, j) => c.map((x, i) => -0.5 * (x - means[j] - rows[i] + whole)));
}

// Places of the points along the two principal directions of the columns, by power iteration; the second direction is
// kept at right angles to the first.
function principal(columns, n) {
  const directions = [], places = [];
  const times = (v) => {
    const place = new Float64Array(n);
    columns.forEach((c, j) => { for (let i = 0; i < n; i++) place[i] += c[i] * v[j]; });
    return place;
  };
  for (let axis = 0; axis < 2; axis++) {
    let v = Float64Array.from(columns, (_, j) => Math.sin(1 + j * (axis + 1)));
    for (let step = 0; step < 60; step++) {
      const place = times(v);
      v = Float64Array.from(columns, (c) => c.reduce((sum, x, i) => sum + x * place[i], 0));
      for (const other of directions) {
        const dot = v.reduce((sum, x, j) => sum + x * other[j], 0);
        v = v.map((x, j) => x - dot * other[j]);
      }
      const length = Math.hypot(...v) || 1;
      v = v.map((x) => x / length);
    }
    directions.push(v);
    places.push(times(v));
  }
  return places;
}

// Stress majorization: each point goes to the weighted mean of where its distances to all others would have it.
function refine(neighbours, u, v) {
  const n = u.length, distances = neighbours.map((_, i) => hops(neighbours, i));
  for (let i = 0; i < n; i++) { u[i] += 0.05 * Math.sin(7 * i); v[i] += 0.05 * Math.cos(7 * i); } // not all on one line
  for (let round = 0; round < 120; round++)
    for (let i = 0; i < n; i++) {
      let weights = 0, su = 0, sv = 0;
      for (let j = 0; j < n; j++) {
        if (i === j) continue;
        const d = distances[i][j], w = 1 / (d * d), du = u[i] - u[j], dv = v[i] - v[j], length = Math.hypot(du, dv) || 1e-9;
        weights += w;
        su += w * (u[j] + (d * du) / length);
        sv += w * (v[j] + (d * dv) / length);
      }
      if (weights > 0) { u[i] = su / weights; v[i] = sv / weights; }
    }
}

// Places of n points with the given lines (pairs of indexes): two arrays; connected points lie about 1 apart.
function layout(n, lines) {
  const neighbours = Array.from({ length: n }, () => []);
  for (const [a, b] of lines) { neighbours[a].push(b); neighbours[b].push(a); }
  if (n < 2) return [new Float64Array(n), new Float64Array(n)];
  const [u, v] = principal(centred(pivotDistances(neighbours), n), n);
  let sum = 0, wanted = 0;
  for (const [a, b] of lines) { sum += Math.hypot(u[a] - u[b], v[a] - v[b]); wanted++; }
  const scale = sum > 0 ? wanted / sum : 1;
  for (let i = 0; i < n; i++) { u[i] *= scale; v[i] *= scale; }
  if (n <= SMALL) refine(neighbours, u, v);
  return [u, v];
}
