// Minima of functions of one variable.
#pragma once

#include <algorithm>
#include <cmath>
#include <utility>

#include "math/optimize/user.hpp"
#include "runtime/error.hpp"
#include "runtime/machine.hpp"

namespace zent::optimize {

template <class Real>
struct Point {
  Real x, f, g = 0;
};

// How a search ended, other than well.
enum class End { well, at_bound, no_progress, limit };

// ---- Values alone --------------------------------------------------------------------------------------------------------

// A bracket lo < mid < hi with f(mid) the least, narrowed by parabolas. The bracket comes from steps that grow by 1.5.
template <class Half, class Real>
struct ValueSearch {
  Univariate<Half, Real> f;
  Real a, b, xacc;
  long max_fcn;
  long calls = 0;
  Point<Real> lo = {}, mid = {}, hi = {};

  // Rounding may have taken x just out of the interval.
  Point<Real> at(Real x) {
    ++calls;
    const Real inside = std::clamp(x, a, b);
    return {inside, ordered(f(inside))};
  }
  bool spent() const {
    return calls >= max_fcn;
  }

  // The first step: inside the side to which it points, not below xacc, and such that its half still moves x.
  Real first_step(Real x, Real step) const {
    const Real left = x - a, right = b - x;
    if (step == 0) {
      const Real longer = std::max(left, right);
      step = longer <= Machine<Real>::largest ? longer / 100 : std::max(std::abs(x), Real(1));
      if (left > right) step = -step;
    }
    if (std::abs(step) < xacc) step = std::copysign(xacc, step);
    for (int k = 0; k < 50 && !distinct(x, step); ++k) step *= 5;
    return step > 0 ? std::min(step, right) : std::max(step, -left);
  }
  static bool distinct(Real x, Real h) {
    const volatile Real half = x + h / 2, whole = x + h;
    return half != x && whole != half && whole != x;
  }

  Real bound(Real direction) const {
    return direction > 0 ? b : a;
  }

  void set(const Point<Real>& p, const Point<Real>& q, const Point<Real>& r) {
    mid = q;
    lo = p.x < r.x ? p : r;
    hi = p.x < r.x ? r : p;
  }

  // Between `before` and a lower value at the end of the interval. True when a point inside proves lower still: then there is
  // a bracket; false when the end is the minimum or the calls are spent.
  bool leave_bound(Point<Real> before, const Point<Real>& end) {
    mid = end;
    const Real closest = std::max(xacc, 4 * Machine<Real>::epsilon * std::abs(end.x));
    while (std::abs(end.x - before.x) > closest && !spent()) {
      const Real x = end.x + (before.x - end.x) / 10;
      if (x == end.x || x == before.x) return false;
      const Point<Real> inside = at(x);
      if (inside.f < end.f) {
        set(before, inside, end);
        return true;
      }
      before = inside;
    }
    return false;
  }

  // From a start without a value to the nearest trial with one, on either side.
  Point<Real> seek_value(const Point<Real>& start) {
    Real h = std::abs(first_step(start.x, 0));
    for (; h <= std::min(b - a, Machine<Real>::largest) && !spent(); h *= Real(1.5)) {
      for (const Real x : {start.x + h, start.x - h}) {
        if (x < a || x > b || spent()) continue;
        const Point<Real> p = at(x);
        if (p.f < start.f) return p;
      }
    }
    return start;
  }

  // Walks downhill from the start until the function rises or the interval ends.
  End bracket(Real x, Real step) {
    Point<Real> start = at(x);
    if (start.f == Machine<Real>::infinity) start = seek_value(start);
    mid = start;
    if (spent()) return End::limit;
    if (start.f == Machine<Real>::infinity) return End::no_progress;
    Real h = first_step(start.x, step);
    if (h == 0) h = first_step(start.x, 0);  // it pointed out of the interval
    Point<Real> worse = start;
    Point<Real> next = at(start.x + h);
    if (next.f >= start.f) {  // the other way, once
      worse = next;
      const Real limit = bound(-h) - start.x;
      h = std::abs(limit) < std::abs(h) ? limit : -h;
      if (h == 0) {  // the start is an end of the interval and the function rises from it
        return leave_bound(worse, start) ? End::well : spent() ? End::limit : End::at_bound;
      }
      if (spent()) return End::limit;
      next = at(start.x + h);
      if (next.f >= start.f) {
        set(worse, start, next);
        return End::well;
      }
    }
    while (true) {
      worse = start;
      start = mid = next;
      const Real limit = bound(h);
      if (start.x == limit) return leave_bound(worse, start) ? End::well : spent() ? End::limit : End::at_bound;
      if (spent()) return End::limit;
      h *= Real(1.5);
      const Real ahead = start.x + h;
      next = at((h > 0 ? ahead < limit : ahead > limit) ? ahead : limit);
      if (next.f >= start.f) {
        set(worse, start, next);
        return End::well;
      }
    }
  }

  // The lowest point of the parabola through the bracket; not finite when there is none.
  Real parabola() const {
    const Real r = (mid.x - lo.x) * (mid.f - hi.f), q = (mid.x - hi.x) * (mid.f - lo.f);
    return mid.x - ((mid.x - hi.x) * q - (mid.x - lo.x) * r) / (2 * (q - r));
  }

  End narrow() {
    Real last_step = hi.x - lo.x;
    bool close_before = false;
    while (hi.x - mid.x > xacc || mid.x - lo.x > xacc) {
      if (spent()) return End::limit;
      const Real width = hi.x - lo.x, margin = width / 100;
      const Real side = hi.x - mid.x > mid.x - lo.x ? hi.x - mid.x : lo.x - mid.x;  // the longer one
      Real x = parabola();
      const bool inside = x >= lo.x + margin && x <= hi.x - margin && std::abs(x - mid.x) <= Real(0.9) * last_step;
      if (!inside) x = mid.x + side / 2;
      const bool close = std::abs(x - mid.x) <= xacc || std::abs(x - lo.x) <= xacc || std::abs(x - hi.x) <= xacc || x == mid.x;
      if (close) {  // likely there: shows that it rises on the longer side, the second time close by
        const Real split = side * (close_before ? Real(0.1) : Real(0.33));
        x = mid.x + std::copysign(std::max(std::abs(split), std::min(xacc, std::abs(side) / 2)), side);
      }
      close_before = close;
      if (x == mid.x || x == lo.x || x == hi.x) return End::no_progress;
      last_step = std::max(std::abs(x - mid.x), margin);
      take(at(x));
    }
    return std::isfinite(mid.f) ? End::well : End::no_progress;
  }

  void take(const Point<Real>& p) {
    Point<Real>& beyond = p.x < mid.x ? lo : hi;
    Point<Real>& behind = p.x < mid.x ? hi : lo;
    if (p.f < mid.f) {
      behind = mid;
      mid = p;
    } else {
      beyond = p;
    }
  }

  End run(Real x, Real step) {
    const End end = bracket(x, step);
    return end == End::well ? narrow() : end;
  }
};

// ---- With the derivative -------------------------------------------------------------------------------------------------

// A descent to a change of sign of f' (or a rise of f), then secants inside the bracket.
template <class Half, class Real>
struct SlopeSearch {
  Univariate<Half, Real> f, slope;
  Real a, b, grad_tol, err_rel;
  long max_fcn;
  long calls = 0;
  Point<Real> best = {};

  Point<Real> at(Real x) {
    ++calls;
    const Real value = ordered(f(x)), derivative = slope(x);
    return {x, std::isnan(derivative) ? Machine<Real>::infinity : value, derivative};
  }
  bool spent() const {
    return calls >= max_fcn;
  }
  Real tolerance(Real x) const {
    return err_rel * std::max(std::abs(x), Real(1));
  }
  bool flat(const Point<Real>& p) const {
    return std::abs(p.g) <= grad_tol;
  }
  // Between best and p there is a minimum: f' turns its sign, or f is higher there.
  bool closes(const Point<Real>& p) const {
    return std::isnan(p.g) || p.f > best.f || (p.g > 0) != (best.g > 0) || p.g == 0;
  }

  static Real secant(const Point<Real>& p, const Point<Real>& q) {
    return p.x - p.g * ((q.x - p.x) / (q.g - p.g));
  }

  End run(Real x) {
    best = at(x);
    if (flat(best)) return End::well;
    if (std::isnan(best.g) || !std::isfinite(best.f)) return End::no_progress;
    const Real limit = best.g > 0 ? a : b;
    if (best.x == limit) return End::at_bound;
    Real step = std::clamp(-best.g, -std::abs(limit - best.x), std::abs(limit - best.x));
    const Real least = tolerance(x);
    if (std::abs(step) < least) step = std::copysign(std::min(least, std::abs(limit - best.x)), step);
    while (true) {
      if (spent()) return End::limit;
      const Real ahead = best.x + step;
      if (ahead == best.x) return End::no_progress;
      const Point<Real> next = at((step > 0 ? ahead < limit : ahead > limit) ? ahead : limit);
      if (closes(next)) return narrow(next);
      const Real guess = secant(best, next);
      const Real further = (guess - next.x) / step;  // a longer step where f' grows towards 0, at most five times it
      step *= further > 1 ? std::min(further, Real(5)) : Real(2);
      if (std::isnan(further)) step = next.x - best.x;
      best = next;
      if (flat(best)) return End::well;
      if (best.x == limit) return End::at_bound;
    }
  }

  // best is the lower end of the bracket, and f falls from it towards other.
  End narrow(Point<Real> other) {
    if (flat(other) && other.f <= best.f) {
      best = other;
      return End::well;
    }
    Point<Real> recent = other;
    Real width = std::abs(other.x - best.x);
    int slow = 0;
    if (other.f < best.f) std::swap(best, other);
    while (true) {
      const Real gap = other.x - best.x;
      if (std::abs(gap) <= tolerance(best.x)) return End::well;
      if (spent()) return End::limit;
      Real part = (secant(best, recent) - best.x) / gap;  // of the bracket, from its better end
      const Real edge = std::min(Real(0.25), tolerance(best.x) / std::abs(gap));
      if (!(part >= edge)) part = Real(0.25);
      if (part > 1 - edge) part = Real(0.75);
      if (slow >= 2) part = Real(0.5);
      const Real x = best.x + part * gap;
      if (!(gap > 0 ? x > best.x && x < other.x : x < best.x && x > other.x)) return End::no_progress;
      const Point<Real> p = at(x);
      if (closes(p)) {
        recent = p;
        other = p;
        if (p.f < best.f) std::swap(best, other), recent = other;
      } else {
        recent = best;
        best = p;
      }
      if (flat(best)) return End::well;
      if (flat(other) && other.f <= best.f) {
        best = other;
        return End::well;
      }
      const Real now = std::abs(other.x - best.x);
      slow = now > width / 2 ? slow + 1 : 0;
      width = now;
    }
  }
};

}  // namespace zent::optimize
