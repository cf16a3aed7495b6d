// SPDX-License-Identifier: MIT
/// @file
/// Records that the host owns and the library reads or writes at fixed offsets.
///
/// The binding offsets are those of the 32-bit (i386) layout; the i386 build
/// checks every one of them with static_assert. On x86-64 the same
/// declarations give the natural 64-bit layout (pointers widen, later fields
/// move), which is what a 64-bit host of this library must use. The reserved
/// byte arrays stand for host fields the library never touches.
#ifndef SPLINECORE_HOST_H
#define SPLINECORE_HOST_H

#include <cstdint>

#include "splinecore/geometry.h"

namespace splinecore {

class SegmentCP;
struct GroupNode;
struct MuscleTable;

/// The view's four transforms, read only.
struct ViewRecord {
  std::uint8_t reserved0[156];  ///< host fields
  Matrix viewMatrix;           ///< model -> view (arc length)
  Matrix inverseViewMatrix;    ///< view -> model (MoveGroup)
  Matrix screenMatrix;         ///< model -> screen
  Matrix inverseScreenMatrix;  ///< screen -> model; must undo screenMatrix
};

/// One link of the figure's list of muscle tables.
struct MuscleTableLink {
  MuscleTableLink* next;  ///< null ends the list
  MuscleTable* table;     ///< the linked table
};

/// The host's record of a figure: its muscle tables and its In flag.
struct FigureRecord {
  std::uint8_t reserved0[260];  ///< host fields
  MuscleTableLink* muscleTables;  ///< every muscle table of the figure
  std::uint8_t reserved1[464 - 260 - 4];  ///< host fields
  std::uint32_t figureFlags;  ///< bit 0: the figure's In flag
};

/// Host record that owns a muscle effect; its word at offset 48 is passed to
/// every effect operation.
struct MuscleOwner {
  std::uint8_t reserved0[48];  ///< host fields
  std::int32_t word;           ///< passed to the effect operations
};

/// A host-supplied effect on one control point in muscle mode. The three
/// virtual operations are the only ones, in this slot order. Effects are
/// allocated by the host from AllocSeg; the library releases them with
/// FreeSeg (without running a destructor) when their control point dies.
class MuscleEffect {
 public:
  /// Moves *position; returns nonzero when it moved it.
  virtual std::int32_t ApplyToPosition(std::int32_t word, SegmentCP* cp, Vector* position) = 0;
  /// Adjust *delta; nonzero when anything changed, bit value 4 meaning that
  /// delta->magnitude is a factor.
  virtual std::int16_t ApplyToInDelta(std::int32_t word, SegmentCP* cp, Delta* delta) = 0;
  /// The same for the out-delta.
  virtual std::int16_t ApplyToOutDelta(std::int32_t word, SegmentCP* cp, Delta* delta) = 0;

  MuscleEffect* next = nullptr;  ///< null ends the list
  MuscleOwner* owner = nullptr;  ///< gives the word passed to the operations

 protected:
  MuscleEffect() = default;  ///< for the host's derived effects
  MuscleEffect(const MuscleEffect&) = default;  ///< copies next and owner
  MuscleEffect& operator=(const MuscleEffect&) = default;  ///< copies next and owner
  ~MuscleEffect() = default;  ///< not virtual: the library never runs it
};

/// Muscle-mode data of one control point (by id), allocated by the host from
/// AllocSeg and released by the library with the control point.
struct MuscleCPData {
  MuscleEffect* effects;  ///< null ends the list
  Delta indelta;          ///< muscle-mode deltas, written by Getmusclep
  Delta outdelta;         ///< the same for the out-tangent
  Vector position;  ///< muscle-mode position of a stack head
};

/// A muscle table: muscle data and previous screen positions by
/// control-point id.
struct MuscleTable {
  std::uint8_t reserved0[684];  ///< host fields
  MuscleCPData** cpData;  ///< indexed by control-point id; null entry: no data
  Vector* prevp;          ///< indexed by id; written only by SetPrevp
  std::uint8_t reserved1[800 - 684 - 8];  ///< host fields
  std::uint16_t count;  ///< number of slots in both arrays
};

/// Bit value of FigureCache::mode that selects muscle mode.
inline constexpr std::uint8_t kMuscleMode = 8;

/// One per figure; every control point points to it through `cache`.
struct FigureCache {
  std::uint8_t reserved0[44];  ///< host fields
  ViewRecord* view;            ///< the view's transforms
  FigureRecord* figure;        ///< the figure's record
  std::uint8_t reserved1[264 - 44 - 8];  ///< host fields
  GroupNode* groupList;      ///< destroyed non-skin control points leave it
  GroupNode* skinGroupList;  ///< the same for skin control points
  MuscleTable* muscleTable;  ///< current table, may be null
  std::uint8_t reserved2[328 - 272 - 4];  ///< host fields
  std::uint8_t generation;        ///< model generation
  std::uint8_t screenGeneration;  ///< screen generation
  std::uint8_t mode;              ///< kMuscleMode set: muscle mode
  std::uint8_t reserved3[472 - 331];  ///< host fields
  std::uint32_t nextId;  ///< next control-point id
};

}  // namespace splinecore

#endif
