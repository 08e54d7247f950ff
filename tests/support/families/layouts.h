// The buildings of the families: each function lays out one kind of site from the random numbers
// of its seed. Private to the families of plans.
//
// One rule tells rooms apart everywhere: an opening of at most kWidestDoor, and of at most 3/4 of
// the narrower side beside it, is a door and divides; a wider one joins, and both sides are one
// room. Cubicles alone are rooms although their front is open over most of its width.
#pragma once

#include "families/site.h"
#include "random.h"

namespace vorund::test::families {

constexpr int kWidestDoor = 2400;  ///< [mm]

/// Offices along straight corridors, as makePlan builds them.
Site layOutOffice(Random& random);

/// Small homes: a narrow hall, rooms on both sides of it, and a kitchen that is open to the living
/// room: over most of its breadth (one room, with stubs of wall) or by a wide opening (two rooms).
Site layOutHome(Random& random);

/// Offices with L-shaped rooms and round rooms.
Site layOutShapes(Random& random);

/// A large hall with columns, smaller rooms around it, double doors.
Site layOutHall(Random& random);

/// Blocks of bays back to back between aisles, and a strip of rooms with doors.
Site layOutCubicles(Random& random);

/// Offices whose corridor walls are of glass.
Site layOutGlass(Random& random);

/// One corridor with two to four bends of 20 to 90 degrees and rooms along it.
Site layOutBentCorridor(Random& random);

/// Offices with many openings of 1.2 to 2.4 m.
Site layOutOpenings(Random& random);

/// Two to four buildings at any angle to each other; no door joins them.
Site layOutCampus(Random& random);

/// A round hall with two to four wings at angles that are no right ones.
Site layOutStar(Random& random);

/// Offices with walls from one pixel to 0.6 m.
Site layOutThickness(Random& random);

// --- What several of them need ------------------------------------------------------------------

/// Walls and doors for the spaces; those that no door reaches are left out.
Building buildFrom(std::vector<Space> spaces, std::uint64_t seed);

/// An office building of the given size. [m]
Building officeOf(Random& random, Span width_m, Span height_m);

/// Rooms side by side along x, within the box.
void addCells(std::vector<Space>& spaces, Random& random, const Box& strip, Span width_mm);

/// Makes the opening wider where its wall and the rule above allow, up to `width_mm`.
/// Returns whether it did.
bool widen(Building& building, std::size_t opening, int width_mm);

/// How far the space reaches along the wall. [mm]
int sideAlong(const Building& building, int space, const Wall& wall);

}  // namespace vorund::test::families
