"""The stand-in's console: the pages on which a user makes a project and its client file, with the names of docs/google-agenda.md.

What a user leaves out there is missing later, as in the real one: the API, the scope, the test user, the type of the client.
"""
import html
import json

PAGE = """<!doctype html><html lang="fr"><meta charset="utf-8"><title>{title}</title><body style="font:16px sans-serif;margin:2em">
<p><a href="/console/projets">{project}</a></p><details><summary>☰</summary><details><summary>API et services</summary>
<a href="/console/bibliotheque">Bibliothèque</a> · <a href="/console/consentement">Écran de consentement OAuth</a></details>
</details>{areas}<h1>{title}</h1><form method="post">{controls}</form></body></html>"""
AREAS = """<nav><a href="/console/audience">Audience</a> · <a href="/console/acces">Accès aux données</a> ·
<a href="/console/clients">Clients</a></nav>"""


def field(label, name):
    return f'<p><label for="{name}">{label}</label> <input id="{name}" name="{name}" size="60"></p>'


def choice(label, name, kind="radio"):
    return f'<p><label><input type="{kind}" name="{name}" value="{label}">{label}</label></p>'


def button(text):
    return f"<p><button>{text}</button></p>"


def link(text, page):
    return f'<p><a href="/console/{page}">{text}</a></p>'


# Each page: its title, what is on it, what must be filled in there, and where its button leads.
PAGES = {
    "": ("Google Cloud", "", (), ""),
    "projets": ("Sélectionner un projet", link("Nouveau projet", "projet") + "{projects}", (), ""),
    "projet": ("Nouveau projet", field("Nom du projet", "project") + button("Créer"), ("project",), "cree"),
    "cree": ("Projet créé", link("Sélectionner le projet", ""), (), ""),
    "bibliotheque": ("Bibliothèque d'API", field("Rechercher des API et des services", "search"), ("search",), "resultats"),
    "resultats": ("Résultats", link("Google Calendar API", "api"), (), ""),
    "api": ("Google Calendar API", button("Activer"), (), "activee"),
    "activee": ("Google Calendar API", button("Désactiver l'API"), (), "api"),
    "consentement": ("Présentation OAuth", link("Commencer", "application"), (), ""),
    "application": ("Informations sur l'application", field("Nom de l'application", "name")
                    + field("Adresse e-mail d'assistance utilisateur", "support") + button("Suivant"), ("name", "support"), "cible"),
    "cible": ("Audience", choice("Interne", "audience") + choice("Externe", "audience") + button("Suivant"), ("audience",),
              "coordonnees"),
    "coordonnees": ("Coordonnées", field("Adresses e-mail", "contact") + button("Suivant"), ("contact",), "fin"),
    "fin": ("Terminer", choice("J'accepte le règlement sur les données utilisateur", "agreed", "checkbox") + button("Créer"),
            ("agreed",), "audience"),
    "audience": ("Audience", "<p>État de publication : En cours de test</p><h2>Utilisateurs tests</h2><p>{user}</p>"
                 + link("Ajouter des utilisateurs", "utilisateur"), (), ""),
    "utilisateur": ("Ajouter des utilisateurs", field("Adresse", "user") + button("Enregistrer"), ("user",), "audience"),
    "acces": ("Accès aux données", "<p>{scope}</p>" + link("Ajouter ou supprimer des champs d'application", "champs"), (), ""),
    "champs": ("Champs d'application", field("Ajouter manuellement des champs d'application", "scope")
               + button("Ajouter au tableau"), ("scope",), "tableau"),
    "tableau": ("Champs d'application", "<p>{scope}</p>" + link("Mettre à jour", "choisis"), (), ""),
    "choisis": ("Accès aux données", "<p>{scope}</p>" + button("Enregistrer"), (), "enregistre"),
    "enregistre": ("Accès aux données", "<p>{scope}</p><p>Modifications enregistrées</p>", (), ""),
    "clients": ("Clients", link("Créer un client", "client"), (), ""),
    "client": ("Créer un client", "<p>Type d'application</p>" + choice("Application Web", "type")
               + choice("Application de bureau", "type") + field("Nom", "client") + button("Créer"), ("type", "client"), "secret"),
    "secret": ("Client OAuth créé", link("Télécharger au format JSON", "json"), (), ""),
}


class Console:
    def __init__(self, client):
        self.client = client
        self.said, self.done = {}, set()  # what the user filled in, and which pages the user has come to

    def missing(self, scope, ready):
        """What keeps a user who makes a project here from an agreement, or the client from the calendar."""
        if "project" not in self.said:  # everything is as it must be, for those who came without a visit
            return None
        if ready:
            return None if "activee" in self.done else "Google Calendar API has not been used in project before or it is disabled."
        if self.said.get("audience") != "Externe" or "@" not in self.said.get("user", ""):
            return "access_denied"
        return None if self.said.get("scope") == scope and "enregistre" in self.done else "invalid_scope"

    def serve(self, path, form):
        """(status, text, headers): a page, the way to the next one, or the file."""
        name = path.removeprefix("/console").strip("/")
        if name == "json" and "secret" in self.done:
            kind = "installed" if self.said["type"] == "Application de bureau" else "web"
            return 200, json.dumps({kind: self.client}), {"Content-Disposition": 'attachment; filename="client_secret_essai.json"'}
        if name not in PAGES:
            return 404, "", {}
        title, controls, needed, following = PAGES[name]
        if form is not None and all(form.get(need, "").strip() for need in needed):
            self.said.update(form)
            self.done.add(following)
            return 303, "", {"Location": f"/console/{following}"}
        known = {key: html.escape(value) for key, value in self.said.items()}
        shown = controls.format_map({"user": "", "scope": "", "projects": "", **known})
        return 200, PAGE.format(title=title, controls=shown, project=known.get("project", "Sélectionner un projet"),
                                areas=AREAS if "audience" in self.done else ""), {}
