#pragma once

#include <QString>

namespace quillet {

class clsUndos;

// Where a copy goes when its natural name is taken. A family folder collects photos from every
// sub-folder of the Source Dir (and the put-aside folder from every photo set aside), so two
// different photos can share a name; neither may silently replace the other. A copy of the same
// photo again (a reviewed level saved once more) replaces its own earlier copy.
namespace CopyTargets {

// The first free name "<base>_<n><.ext>" (n from 2) beside `target`, or `target` itself when
// nothing is there. Throws Error when no free name is left.
QString DistinctName(const QString &target);

// True when the file at `target` is a copy of the photo whose untagged source path is
// `untaggedSource`: an undo item of that photo names it, or (a plain copy) its bytes equal the
// photo's at `currentSource`.
bool IsCopyOf(const QString &target, const QString &untaggedSource, const QString &currentSource, bool plainCopy,
              const clsUndos *undos);

// The name a copy of the photo is to get: `target`, unless a different photo's file is there.
QString ForPhoto(const QString &target, const QString &untaggedSource, const QString &currentSource, bool plainCopy,
                 const clsUndos *undos);

} // namespace CopyTargets

} // namespace quillet
