#include "zelkor/ast/source/SourceFile.hpp"

#include "zelkor/ast/Project.hpp"

namespace zelkor::ast::source {

/// The path is the key under which the project holds the file: the file leaves the map under its old key and
/// comes back under the new one, so that the map never holds it under a stale key.
void SourceFile::Impl::setPath(std::u16string const& value) {
    brant::zero::Core::requireWritable(*this);
    brant::zero::schema::PropertyRow const& path = rows[0];
    if (getPath() == value) return;
    brant::zero::schema::PropertyRow const& files = Project::Impl::rows[0];
    brant::zero::ModelElementImpl* project = containmentRow() == &files ? containerBody() : nullptr;
    if (project != nullptr && static_cast<Project::Impl*>(project)->getFiles()[value] != nullptr)
        brant::zero::reportException(brant0::messages::UniquenessConstraint());
    brant::zero::Core::Level level(*this);
    if (project != nullptr) brant::zero::Core::takeOut(*this);
    brant::zero::Core::setString(*this, path, value);
    if (project != nullptr) brant::zero::Core::putBack(*project, files, *this);
    level.commit();
}

} // namespace zelkor::ast::source
