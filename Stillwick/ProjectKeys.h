// Which key of a project's text belongs to which field of its records.
#pragma once

#include "Stillwick/ProjectFile.h"

#include <string_view>
#include <tuple>

namespace stillwick {

/// A key of an object and the record's field that it names.
template <typename Record, typename Field>
struct ProjectKey {
    const char* name;
    Field Record::*field;
};
template <typename Record, typename Field>
ProjectKey(const char*, Field Record::*) -> ProjectKey<Record, Field>;

/// The keys of a record, ascending as they are written.
template <typename Record>
inline constexpr std::tuple<> projectKeys;

template <>
inline constexpr std::tuple projectKeys<Annotation>{
    ProjectKey{"a", &Annotation::a},
    ProjectKey{"b", &Annotation::b},
    ProjectKey{"end", &Annotation::end},
    ProjectKey{"g", &Annotation::g},
    ProjectKey{"id", &Annotation::id},
    ProjectKey{"kind", &Annotation::kind},
    ProjectKey{"lineWidth", &Annotation::lineWidth},
    ProjectKey{"r", &Annotation::r},
    ProjectKey{"start", &Annotation::start},
};

template <>
inline constexpr std::tuple projectKeys<FrameDTO>{
    ProjectKey{"annotations", &FrameDTO::annotations},
    ProjectKey{"notes", &FrameDTO::notes},
    ProjectKey{"timeScale", &FrameDTO::timeScale},
    ProjectKey{"timeValue", &FrameDTO::timeValue},
};

template <>
inline constexpr std::tuple projectKeys<GroupDTO>{
    ProjectKey{"frames", &GroupDTO::frames},
    ProjectKey{"name", &GroupDTO::name},
    ProjectKey{"notes", &GroupDTO::notes},
};

template <>
inline constexpr std::tuple projectKeys<EdgeDTO>{
    ProjectKey{"a", &EdgeDTO::a},
    ProjectKey{"b", &EdgeDTO::b},
    ProjectKey{"feather", &EdgeDTO::feather},
    ProjectKey{"g", &EdgeDTO::g},
    ProjectKey{"outline", &EdgeDTO::outline},
    ProjectKey{"outlineWidth", &EdgeDTO::outlineWidth},
    ProjectKey{"r", &EdgeDTO::r},
    ProjectKey{"shrink", &EdgeDTO::shrink},
};

template <>
inline constexpr std::tuple projectKeys<ProjectFile>{
    ProjectKey{"activeGroupIndex", &ProjectFile::activeGroupIndex},
    ProjectKey{"cropToSubject", &ProjectFile::cropToSubject},
    ProjectKey{"edge", &ProjectFile::edge},
    ProjectKey{"filter", &ProjectFile::filter},
    ProjectKey{"groups", &ProjectFile::groups},
    ProjectKey{"outputFolderBookmark", &ProjectFile::outputFolderBookmark},
    ProjectKey{"version", &ProjectFile::version},
    ProjectKey{"videoBookmark", &ProjectFile::videoBookmark},
    ProjectKey{"videoName", &ProjectFile::videoName},
};

template <typename Record>
inline constexpr bool projectKeysAscend = std::apply(
    [](auto... keys) {
        std::string_view last;
        const auto follows = [&last](std::string_view name) {
            const bool ascends = last < name;
            last = name;
            return ascends;
        };
        return (follows(keys.name) && ...);
    },
    projectKeys<Record>);

static_assert(projectKeysAscend<Annotation> && projectKeysAscend<FrameDTO> &&
              projectKeysAscend<GroupDTO> && projectKeysAscend<EdgeDTO> &&
              projectKeysAscend<ProjectFile>);

} // namespace stillwick
