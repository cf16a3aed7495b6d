// SPDX-License-Identifier: MIT
// Group lists: singly linked GroupNode lists of control points.
#include "marrow/marrow.h"
#include "splinecore/groups.h"
#include "splinecore/segment_cp.h"

namespace splinecore {

int SegmentCP::AddToGroup(GroupNode** list, int mark) {
  GroupNode** link = list;
  for (; *link != nullptr; link = &(*link)->next)
    if ((*link)->cp == this) return 1;
  auto* node = static_cast<GroupNode*>(AllocExt(sizeof(GroupNode)));
  if (node == nullptr) return 1;  // no memory: nothing added, no flag
  node->cp = this;
  node->next = nullptr;
  *link = node;
  if (mark) OnGrouped();
  return 1;
}

int SegmentCP::AddToGroupNoCheck(GroupNode** list) {
  auto* node = static_cast<GroupNode*>(AllocExt(sizeof(GroupNode)));
  if (node == nullptr) return 0;
  node->cp = this;
  node->next = *list;
  *list = node;
  return 1;
}

int SegmentCP::DeleteFromGroup(GroupNode** list) {
  for (GroupNode** link = list; *link != nullptr; link = &(*link)->next) {
    GroupNode* node = *link;
    if (node->cp != this) continue;
    OffGrouped();
    *link = node->next;
    FreeExt(node);
    return 1;
  }
  return 0;
}

int SegmentCP::IsAnyGrouped() {
  for (const SegmentCP* m = head; m != nullptr; m = m->stackNext)
    if (m->IsGrouped()) return 1;
  return 0;
}

void FreeGroup(GroupNode** list) {
  for (GroupNode* node = *list; node != nullptr;) {
    GroupNode* next = node->next;
    FreeExt(node);
    node = next;
  }
  *list = nullptr;
}

}  // namespace splinecore
