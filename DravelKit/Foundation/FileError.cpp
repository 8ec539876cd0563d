#include "DravelKit/Foundation/FileError.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

namespace dravel {

namespace {

constexpr std::pair<int, const char*> reasons[] = {
    {EACCES, "Permission non accordée"},
    {EPERM, "Opération non permise"},
    {ENOENT, "Aucun fichier ou dossier de ce nom"},
    {ENOTDIR, "Un élément du chemin n'est pas un dossier"},
    {EISDIR, "C'est un dossier"},
    {EEXIST, "Le fichier existe déjà"},
    {ENOSPC, "Il n'y a plus de place sur le disque"},
    {EDQUOT, "Le quota de disque est dépassé"},
    {EROFS, "Le système de fichiers est en lecture seule"},
    {EFBIG, "Le fichier est trop volumineux"},
    {EBADMSG, "Le contenu est endommagé"},
    {EIO, "Erreur d'entrée-sortie"},
    {ENAMETOOLONG, "Le nom du fichier est trop long"},
    {ELOOP, "Trop de liens symboliques"},
    {EMFILE, "Trop de fichiers ouverts"},
    {ENFILE, "Trop de fichiers ouverts"},
    {ENOMEM, "Mémoire insuffisante"},
    {EBUSY, "Le fichier est occupé"},
    {ETXTBSY, "Le fichier est occupé"},
    {EBADF, "Le flux est fermé"},
    {EPIPE, "Plus personne ne lit la sortie"},
    {ENXIO, "Le périphérique n'existe pas"},
    {ENODEV, "Le périphérique n'existe pas"},
    {ESTALE, "Le serveur de fichiers a perdu ce fichier"},
    {ETIMEDOUT, "Le serveur de fichiers ne répond pas"},
};

std::string systemDescription(int code) {
    const auto* known = std::ranges::find(reasons, code, &std::pair<int, const char*>::first);
    return known == std::end(reasons) ? std::strerror(code) : known->second;
}

std::string describe(FileError::Kind kind, int code) {
    switch (kind) {
    case FileError::Kind::system: return systemDescription(code);
    case FileError::Kind::notUtf8: return "Le texte n'est pas en UTF-8";
    case FileError::Kind::notRegular: return "Ce n'est pas un fichier ordinaire";
    case FileError::Kind::changed: return "Un autre programme ne cesse de modifier le fichier";
    case FileError::Kind::open: return "Un autre programme est en train d'écrire ce fichier";
    case FileError::Kind::busy: return "Tacla est déjà en train d'écrire ce fichier";
    }
    return {};
}

}

FileError::FileError(Kind theKind, std::filesystem::path thePath, int theCode)
    : std::runtime_error(thePath.string() + " : " + describe(theKind, theCode)), kind(theKind),
      path(std::move(thePath)), code(theCode) {}

std::string FileError::description() const { return describe(kind, code); }

}
