#include "DravelKit/Foundation/FileError.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace dravel {

namespace {

std::string systemDescription(int code) {
    switch (code) {
    case EACCES: return "Permission non accordée";
    case EPERM: return "Opération non permise";
    case ENOENT: return "Aucun fichier ou dossier de ce nom";
    case ENOTDIR: return "Un élément du chemin n'est pas un dossier";
    case EISDIR: return "C'est un dossier";
    case EEXIST: return "Le fichier existe déjà";
    case ENOSPC: return "Il n'y a plus de place sur le disque";
    case EDQUOT: return "Le quota de disque est dépassé";
    case EROFS: return "Le système de fichiers est en lecture seule";
    case EFBIG: return "Le fichier est trop volumineux";
    case EIO: return "Erreur d'entrée-sortie";
    case ENAMETOOLONG: return "Le nom du fichier est trop long";
    case ELOOP: return "Trop de liens symboliques";
    case EMFILE:
    case ENFILE: return "Trop de fichiers ouverts";
    case ENOMEM: return "Mémoire insuffisante";
    case EBUSY:
    case ETXTBSY: return "Le fichier est occupé";
    case EBADF: return "Le flux est fermé";
    case EPIPE: return "Plus personne ne lit la sortie";
    case ENXIO:
    case ENODEV: return "Le périphérique n'existe pas";
    case ESTALE: return "Le serveur de fichiers a perdu ce fichier";
    case ETIMEDOUT: return "Le serveur de fichiers ne répond pas";
    default: return std::strerror(code);
    }
}

std::string describe(FileError::Kind kind, int code) {
    switch (kind) {
    case FileError::Kind::system: return systemDescription(code);
    case FileError::Kind::notUtf8: return "Le texte n'est pas en UTF-8";
    case FileError::Kind::notRegular: return "Ce n'est pas un fichier ordinaire";
    case FileError::Kind::changed: return "Un autre programme ne cesse de modifier le fichier";
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
