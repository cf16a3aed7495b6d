#!/usr/bin/python3
"""A float32 model of the library's bit-pinned arithmetic, written from its
rules (docs and header comments), not from its code: double intermediates,
every stored float rounded with struct.pack('f').

It prints one case per line, "op inputs = outputs", every number a Python hex
float; tests/tools/model_test.cpp replays each case through the library and
requires the same bits. `float_model.py > model_cases.txt` regenerates the
checked-in file; `float_model.py --check FILE` fails when FILE differs.
To add a case, add its inputs to CASES below and regenerate."""
import math
import struct
import sys


def f32(x):
    if math.isnan(x):
        return x
    try:
        return struct.unpack('f', struct.pack('f', x))[0]
    except OverflowError:
        return math.copysign(math.inf, x)


def F(v):  # a vector of floats from a tuple (inputs are floats already)
    return tuple(f32(c) for c in v)


def add(a, b): return tuple(f32(x + y) for x, y in zip(a, b))
def sub(a, b): return tuple(f32(x - y) for x, y in zip(a, b))
def scale(a, s): return tuple(f32(x * s) for x in a)  # s: float or double
def neg(a): return tuple(-x for x in a)
def dot(a, b): return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]
def length(a): return math.sqrt(dot(a, a))
def cross(a, b):
    return F((a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]))


def normalize(a):
    n = length(a)
    return a if n == 0 else scale(a, 1.0 / f32(n))


ZERO = (0.0, 0.0, 0.0)


# --- tangent rule of one control point (screen = model) ---------------------
def tangents(pts, smooth, closed, i):
    """(it, ot, normal or None, result) of point i; pts in walk order, point
    k's next is k + 1 and its prev k - 1 (wrapping when closed)."""
    n = len(pts)
    nxt = (i + 1) % n if closed or i + 1 < n else None
    prv = (i - 1) % n if closed or i > 0 else None
    P = pts[i]
    A = pts[prv] if prv is not None else None
    B = pts[nxt] if nxt is not None else None
    if smooth[i] and A is not None and B is not None:
        AB = sub(A, B)
        L = f32(length(AB))
        if L == 0:
            return ZERO, ZERO, None, 0
        D = scale(AB, 1.0 / L)
        LB, LA = f32(length(sub(P, B))), f32(length(sub(A, P)))
        S = (LA + LB) / L
        it, ot = scale(D, LB / S), scale(D, LA / S)
        N = cross(scale(sub(A, P), 1.0 / LA), D)
        return it, ot, N, 1
    if smooth[i] and A is None and B is not None and nxt + 1 < n:
        C = pts[nxt + 1]
        D = normalize(sub(P, B))
        V = scale(normalize(sub(P, C)), f32(length(sub(B, P))))
        W = scale(D, dot(V, D))
        t = sub(W, sub(V, W))
        K = normalize(sub(scale(add(P, C), 0.5), B))
        return end_tangent(t, D, K)
    if smooth[i] and B is None and A is not None and prv - 1 >= 0:
        C = pts[prv - 1]
        D = normalize(sub(A, P))
        V = scale(normalize(sub(C, P)), f32(length(sub(A, P))))
        W = scale(D, dot(V, D))
        t = sub(scale(W, 2.0), V)
        K = normalize(sub(A, scale(add(C, P), 0.5)))
        return end_tangent(t, D, K)
    it = scale(sub(P, B), 0.5) if B is not None else None
    if A is None:
        return it, it, None, 0
    ot = scale(sub(A, P), 0.5)
    if B is None:
        return ot, ot, None, 0
    return it, ot, cross(it, ot), 1


def end_tangent(t, D, K):
    m = f32(length(t))
    if m == 0:
        return t, t, ZERO, 1
    Q = scale(t, f32(1.0 / m))
    if dot(Q, D) < dot(K, D):
        t = scale(K, m)
    return t, t, cross(Q, D), 1


# --- turning and scaling ------------------------------------------------------
def turn_toward(a, b, degrees):
    if degrees == 0 or not math.isfinite(degrees):  # no turn
        return a
    if degrees < 0:
        degrees = f32(math.fmod(math.trunc(degrees), 360) + 360)
    elif degrees > 360:
        degrees = f32(math.fmod(math.trunc(degrees), 360))
    quadrants = [(a, sub(b, a)), (b, sub(neg(a), b)), (neg(a), sub(a, b)), (neg(b), add(a, b))]
    q = min(int(degrees // 90), 3)
    start, along = quadrants[q]
    f = f32((degrees - 90 * q) * (1.0 / 90))
    return normalize(add(start, scale(along, f)))


def apply_delta(t, pitch, yaw, magnitude, normal):
    L = f32(length(t))
    if L == 0:
        return t, normal
    Ln = f32(length(normal))
    if Ln != 0:
        normal = scale(normal, 1.0 / Ln)
    u = scale(t, 1.0 / L)
    c = cross(u, normal)
    w = turn_toward(u, normal, pitch)
    t = turn_toward(w, c, yaw)
    return scale(scale(t, L), magnitude), normal


# --- evaluation and forward differencing ----------------------------------------
def bernstein(t):
    s = 1.0 - t
    return s * s * s, s * s * t * 3.0, s * (t * t) * 3.0, t * (t * t)


def calc_point(p, t):
    w = bernstein(t)
    out = scale(p[0], w[0])
    for k in (1, 2, 3):
        out = add(out, scale(p[k], w[k]))
    return out


def calc_point2(p, t, z):
    w = bernstein(t)
    return tuple(f32(sum(w[k] * p[k][j] for k in range(4))) for j in (0, 1)) + (z,)


def fd_steps(n):
    h = f32(1.0 / n) if n else math.inf
    h2 = f32(h * h)
    h3 = f32(h2 * h)
    return h, h2, h3, f32(6.0 * h3), f32(2.0 * h2)


def cubic_to_poly(p0, p1, t0, t1):
    a = add(add(sub(scale(p0, 2.0), scale(p1, 2.0)), t0), t1)
    b = sub(sub(add(scale(p0, -3.0), scale(p1, 3.0)), scale(t0, 2.0)), t1)
    return a, b, t0, p0


def cubic_to_poly2(p0, p1, t0, t1, az, bz):
    a = tuple(f32(2.0 * (p0[j] - p1[j]) + t0[j] + t1[j]) for j in (0, 1)) + (az,)
    b = tuple(f32(3.0 * (p1[j] - p0[j]) - 2.0 * t0[j] - t1[j]) for j in (0, 1)) + (bz,)
    return a, b


def init_column(a, b, c, d, n):
    h, h2, h3, h3x6, h2x2 = fd_steps(n)
    d1 = add(add(scale(a, h3), scale(b, h2)), scale(c, h))
    d2 = add(scale(a, h3x6), scale(b, h2x2))
    return [d, d1, d2, scale(a, h3x6)]


def bump(col, dims=3):
    p, d1, d2, d3 = col
    def step(u, v): return tuple(f32(u[j] + v[j]) if j < dims else u[j] for j in range(3))
    return [step(p, d1), step(d1, d2), step(d2, d3), d3]


def fd2d(cubic, n, zs, bumps):
    p0, p1, t0, t1 = cubic
    h, h2, h3, h3x6, h2x2 = fd_steps(n)
    a, b = cubic_to_poly2(p0, p1, t0, t1, 0.0, 0.0)
    def xy(fn, z): return tuple(f32(fn(j)) for j in (0, 1)) + (z,)
    col = [xy(lambda j: p0[j], zs[0]),
           xy(lambda j: a[j] * h3 + b[j] * h2 + t0[j] * h, zs[1]),
           xy(lambda j: a[j] * h3x6 + b[j] * h2x2, zs[2]),
           xy(lambda j: a[j] * h3x6, zs[3])]
    for _ in range(bumps):
        col = bump(col, 2)
    return col


# --- a piece of a cubic by blossoming ------------------------------------------
def subdivide(c, a, b):
    """B(a,a,a), B(a,a,b), B(a,b,b), B(b,b,b): each weight formed in double,
    products left to right, rounded to float; then ((c0 w0 + c1 w1) + c2 w2) + c3 w3."""
    ra, rb = 1.0 - a, 1.0 - b
    rows = (((ra * ra) * ra, ((3.0 * a) * ra) * ra, ((3.0 * a) * a) * ra, (a * a) * a),
            ((ra * ra) * rb, ra * (2.0 * a + (1.0 - 3.0 * a) * b), a * (a + (2.0 - 3.0 * a) * b), (a * a) * b),
            ((ra * rb) * rb, rb * (a + (2.0 - 3.0 * a) * b), b * (2.0 * a + (1.0 - 3.0 * a) * b), (a * b) * b),
            ((rb * rb) * rb, ((3.0 * b) * rb) * rb, ((3.0 * b) * b) * rb, (b * b) * b))
    out = []
    for w in rows:
        point = scale(c[0], f32(w[0]))
        for k in (1, 2, 3):
            point = add(point, scale(c[k], f32(w[k])))
        out.append(point)
    return out


# --- lengths in view space ---------------------------------------------------
def transform(m, v, point):
    return F(tuple(m[r][0] * v[0] + m[r][1] * v[1] + m[r][2] * v[2] + (m[r][3] if point else 0.0)
                   for r in range(3)))


class Spline:
    """An open or closed spline of points with neutral deltas under an
    identity screen and the view `m`: model tangents are the tangent rule's."""
    def __init__(self, pts, smooth, closed, m):
        self.pts, self.closed, self.m = pts, closed, m
        self.tan = [tangents(pts, smooth, closed, i)[:2] for i in range(len(pts))]

    def next(self, i):
        return (i + 1) % len(self.pts) if self.closed or i + 1 < len(self.pts) else None

    def cubic(self, c):
        n = self.next(c)
        return (transform(self.m, self.pts[n], True), transform(self.m, self.pts[c], True),
                transform(self.m, self.tan[n][1], False), transform(self.m, self.tan[c][0], False))

    def chords(self, c):
        p0, p1, t0, t1 = self.cubic(c)
        col = init_column(*cubic_to_poly(p0, p1, t0, t1), 30)
        out = []
        for _ in range(30):
            prev = col[0]
            col = bump(col)
            out.append(math.sqrt(dot(sub(prev, col[0]), sub(prev, col[0]))))
        return out

    def curve_length(self, c):
        total = 0.0
        for chord in self.chords(c):
            total = f32(total + chord)
        return total

    def total_length(self, c):
        if self.next(c) is None:
            return 1.0
        total = 0.0
        while True:
            total = f32(total + self.curve_length(c))
            if self.closed and c == len(self.pts) - 1:
                return total
            c = self.next(c)
            if self.next(c) is None:
                return total

    def in_segment(self, c, rest):
        p0, p1, t0, t1 = self.cubic(c)
        chords = [f32(chord) for chord in self.chords(c)[::-1]]  # a float table, index 0 ends at c
        acc, steps, found = 0.0, 0.0, None
        for j, chord in enumerate(chords):
            if acc + chord > rest:
                found = j
                break
            steps = f32(steps + f32(1 / 30))
            acc = f32(acc + chord)
        if found is None:
            return p0, t0
        t = f32(1.0 - ((rest - acc) / chords[found] * f32(1 / 30) + steps))
        a, b, _, _ = cubic_to_poly(p0, p1, t0, t1)
        tt, ttt = t * t, t * t * t
        pos = F(tuple(a[j] * ttt + b[j] * tt + t0[j] * t + p0[j] for j in range(3)))
        direction = F(tuple(3.0 * a[j] * tt + 2.0 * b[j] * t + t0[j] for j in range(3)))
        return pos, direction

    def at_length(self, c, want):
        """(position, direction, walked); direction None when unwritten."""
        if self.next(c) is None:
            return transform(self.m, self.pts[c], True), None, 0.0
        walked = 0.0
        while True:
            loop_end = self.closed and c == len(self.pts) - 1
            before = walked
            walked_d = walked + self.curve_length(c)
            walked = f32(walked_d)
            if walked_d > want:
                pos, direction = self.in_segment(c, f32(want - before))
                return pos, direction, walked
            c = self.next(c)
            if loop_end or self.next(c) is None:
                break
        return (transform(self.m, self.pts[c], True), transform(self.m, self.tan[c][1], False), walked)


# --- cases ------------------------------------------------------------------
IDENTITY = ((1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0))
# A quarter turn about z, scaled by 2 and moved: every value passes the view.
TURNED = ((0, -2, 0, 10), (2, 0, 0, -4), (0, 0, 2, 1))
X, Y = (1.0, 0.0, 0.0), (0.0, 1.0, 0.0)
MAXF = f32(3.4028234663852886e38)
TURNS = [(X, Y, d) for d in (90, 180, 270, 360, 45, 135, 225, 315, 30, 100, 200, 300, 359.5, -90, -30, -0.5,
                             -390.25, -360, 450.75, 1000.5, 0.0, -0.0, 16.6)] + [
    ((2, 0, 0), (1, 1, 0), 45), ((2, 0, 0), (1, 1, 0), 135), ((2, -3, 0.5), Y, 0), (X, ZERO, 60), (X, ZERO, 120),
    (X, (-1, 0, 0), 45), ((2, 0, 0), Y, 720), ((2, 0, 0), (0, 3, 0), 2147483520.0),
    ((2, 0, 0), (0, 3, 0), -2147483648.0), ((2, 0, 0), Y, 2147483648.0), ((2, 0, 0), Y, 3.0e9),
    ((2, 0, 0), Y, -3.0e9), ((2, 0, 0), Y, -1.0e30), ((2, 0, 0), Y, MAXF), ((2.1, -3.1, -2.0), (-3.2, -3.5, 2.4), 16.6),
    ((2, -3, 0.5), Y, math.nan), ((2, -3, 0.5), Y, math.inf), ((2, -3, 0.5), Y, -math.inf),
    ((0.1, 0.7, 0.3), (0.6, 0.2, 0.9), 90)]  # a quadrant's end is the next one's start: b, not a + (b - a)
DELTAS = [((2, 0, 0), (0, 0, 3), 90, 0, 1), ((2, 0, 0), (0, 0, 3), 0, 90, 1), ((2, 0, 0), (0, 0, 3), 0, 0, 3),
          (X, (0, 0, 1), 45, 45, 1), ((2, 0, 0), (0, 0, 3), 30, 0, 1), ((0, -0.0, 0), (0, 0, 3), 45, 10, 2),
          ((0, 3, 0), ZERO, 45, 0, 1), ((0, 3, 0), ZERO, 90, 0, 0.5), (X, (1.2, -4.6, -1.2), 0, 0, 1),
          ((-1.9, 2.2, -1.4), (-1.6, -3.4, -3.3), 0, 0, 1.8), ((0.3, -1.7, 2.9), (1.1, 0.4, -0.6), -37.5, 212.25, 0.7)]
S, K = True, False  # smooth, peaked
TANGENT_SPLINES = [  # (points with smooth flags, closed, the point asked)
    ([((0.7, -4.9, -2.8), K), ((-0.3, -2.5, 0.4), S), ((-2.2, 4.2, 2.7), K)], False, 1),  # lengths rounded first
    ([((-2.0, 2.3, -1.1), S), ((1.9, -2.8, -1.0), K), ((-0.5, -0.9, -4.7), K)], False, 0),  # dot unrounded
    ([((0.4, 2.4, -2.4), S), ((-2.6, -1.6, 1.6), K),
      ((-float.fromhex('0x1.e0c7ccp+0'), -float.fromhex('0x1.95da8ap+1'), float.fromhex('0x1.2436f2p-1')), K)],
     False, 0),  # the limit compares doubles
    ([((-3.0, 4.4, 1.9), S), ((-1.4, -3.3, -3.5), K), ((-4.3, -2.0, 1.0), K)], False, 0),  # W - (V - W)
    ([((1.5, 4.0, -3.9), K), ((4.4, 2.4, 4.2), K), ((1.2, 2.4, 3.0), S)], False, 2),  # 2W - V
    ([((-3, 0, 0), K), ((0, 0, 0), S), ((1, 0, 0), K)], False, 1),
    ([((-3, 0, 0), K), ((0, 0, 0), K), ((1, 0, 0), K)], False, 1),
    ([((-1, 1, 0), K), ((0, 0, 0), S), ((1, 1, 0), K)], False, 1),
    ([((0, 0, 0), S), ((-1, 0, 0), K), ((0, -1, 0), K)], False, 0),  # limited onto K
    ([((0, 1, 0), K), ((1, 0, 0), K), ((0, 0, 0), S)], False, 2),
    ([((0, 0, 0), S), ((-1, 0, 0), K), ((-2, 0, 0), K)], False, 0),
    ([((0, 0, 0), S), ((0, 0, 0), K), ((3, 1, 0), K)], False, 0),  # on top of next
    ([((1, 2, 0), S), ((3, -1, 0.5), S)], True, 0),  # prev = next
    ([((1, 2, 0), K), ((3, -1, 0.5), K)], True, 1),
    ([((1, 2, 0), S), ((3, -1, 0.5), S)], False, 0),
    ([((1, 2, 0), S), ((3, -1, 0.5), S)], False, 1),
    ([((0.5, 0.25, 0), S), ((2, 1, 0), S), ((1, 3, 1), S), ((-1, 2, 0), S)], True, 3),
]
LENGTH_SPLINES = [  # (points, closed, view, lengths asked from the first point)
    ([((0, 0, 0), K), ((1.5, 0, 0), K), ((0, 2, 0), K)], False, TURNED, [0, 1, 4, 8.000001, 1e6]),
    ([((0, 0, 0), K), ((1.5, 0, 0), K), ((0, 2, 0), K)], True, TURNED, [0, 2.5, 8.5, 100]),
    ([((2, 3.5, -0.5), K), ((2, 5, -0.5), K)], False, TURNED, [0, 1, 3.0000002]),
    ([((1, 2, 3), S)], False, TURNED, [2]),
    ([((2, 3, 1), S), ((0, 0, 0), S), ((1.25, -0.5, 0.75), S), ((-1, 1, 2), K)], False, TURNED, [0, 1.1, 2.5, 7]),
    ([((-0.97, 0.32, 2.56), S), ((-1.39, -2.22, 0.16), S), ((-1.57, -2.34, -2.03), S), ((0.3, 0.1, 0.2), S)],
     False, IDENTITY, [0.3, 3.7, 5.2, 9.9]),
    ([((0.3, -1.1, 2.7), S), ((2.2, 1.4, 0.6), S), ((4.2, 0.9, -1.3), S), ((1, 2, 0.5), S)], True,
     ((0.5, -1.25, 0.75, 3), (1.5, 0.25, -2, -1), (-0.5, 1, 1.75, 0.5)), [0.7, 6.1, 13.3]),
]
PIECE = ((0.1, -1.3, 2.5), (1.7, 2.9, -0.4), (3.3, 0.6, 1.1), (4.1, -2.2, 0.7))
CURVED_CUBIC = ((0.1, -1.3, 2.5), (4.1, -2.2, 0.7), (4.8, 12.6, -8.7), (-3.9, 1.7, 2.3))
ZS = (11.0, 12.0, 13.0, 14.0)


def hexs(values):
    return ' '.join(float.hex(float(v)) for v in values)


def flat(vectors):
    return [c for v in vectors for c in v]


def cases():
    for a, b, d in TURNS:
        a, b, d = F(a), F(b), f32(d)
        yield 'turn', flat([a, b]) + [d], turn_toward(a, b, d)
    for t, n, p, yw, m in DELTAS:
        t, n = F(t), F(n)
        yield 'delta', flat([t, n]) + [f32(p), f32(yw), f32(m)], flat(apply_delta(t, f32(p), f32(yw), f32(m), n))
    for spline, closed, i in TANGENT_SPLINES:
        pts, smooth = [F(p) for p, _ in spline], [s for _, s in spline]
        it, ot, normal, result = tangents(pts, smooth, closed, i)
        ins = [len(pts), int(closed), i] + flat([p + (float(s),) for p, s in zip(pts, smooth)])
        yield 'tangents', ins, flat([it, ot, normal if normal is not None else (math.nan,) * 3]) + [result]
    for spline, closed, view, lengths in LENGTH_SPLINES:
        pts, smooth = [F(p) for p, _ in spline], [s for _, s in spline]
        m = tuple(F(row[:3]) + (f32(row[3]),) for row in view)
        model = Spline(pts, smooth, closed, m)
        ins = [len(pts), int(closed)] + flat(m) + flat([p + (float(s),) for p, s in zip(pts, smooth)])
        segs = [model.curve_length(c) for c in range(len(pts)) if model.next(c) is not None]
        yield 'lengths', ins, segs + [model.total_length(0), model.total_length(len(pts) - 1)]
        for want in lengths:
            pos, direction, walked = model.at_length(0, f32(want))
            yield 'at_length', ins + [f32(want)], flat([pos, direction or (math.nan,) * 3]) + [walked]
    piece = [F(p) for p in PIECE]
    for t in (0.0, 1.0, 0.3, 0.5, 2.0, -0.75):
        yield 'calc_point', flat(piece) + [f32(t)], calc_point(piece, f32(t)) + calc_point2(piece, f32(t), -5.5)
    curved = [F(v) for v in CURVED_CUBIC]
    yield 'poly', flat(curved), flat(cubic_to_poly(*curved)[:2]) + flat(cubic_to_poly2(*curved, 21.0, 22.0))
    for n in (0, 1, 3, 7, 30, 65535):
        yield 'steps', [n], fd_steps(n)
        a, b, c, d = cubic_to_poly(*curved)
        col = init_column(a, b, c, d, n)
        for _ in range(n if 0 < n < 100 else 2):
            col = bump(col)
        yield 'column', flat(curved) + [n], flat(init_column(a, b, c, d, n) + col)
    for cubic in (piece, curved):
        for a, b in ((0, 1), (1, 0), (0.25, 0.5), (0.75, 0.25), (1, 0.75), (0.3, 0.9), (0.6, 0.1), (0.5, 0.5)):
            yield 'subdivide', flat(cubic) + [f32(a), f32(b)], flat(subdivide(cubic, f32(a), f32(b)))
    for cubic, n, bumps in ((curved, 7, 7), (curved, 1, 1), (curved, 0, 0), (curved, 5, 9),
                            (((0, 0, 0), (3, 0, 0), (3, 0, 0), (3, 0, 0)), 3, 3),
                            (((2.5, -1, 0), (2.5, -1, 0), ZERO, ZERO), 5, 9)):
        cubic = [F(v) for v in cubic]
        yield 'fd2d', flat(cubic) + [n, bumps], flat(fd2d(cubic, n, ZS, bumps))


def main():
    lines = [f'{op} {hexs(ins)} = {hexs(outs)}' for op, ins, outs in cases()]
    text = '\n'.join(lines) + '\n'
    if len(sys.argv) == 3 and sys.argv[1] == '--check':
        with open(sys.argv[2]) as f:
            if f.read() != text:
                sys.exit(f'{sys.argv[2]} differs from the model: regenerate it with {sys.argv[0]}')
        print(f'{len(lines)} cases match')
    else:
        sys.stdout.write(text)


if __name__ == '__main__':
    main()
