<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>JoinPage</name>
    <message>
        <source>Hidden network</source>
        <translation>Réseau masqué</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Nom</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Mot de passe</translation>
    </message>
    <message>
        <source>Hide</source>
        <translation>Masquer</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Afficher</translation>
    </message>
    <message>
        <source>8 to 63 characters</source>
        <translation>8 à 63 caractères</translation>
    </message>
    <message>
        <source>8 to 63 characters, or none for an open network</source>
        <translation>8 à 63 caractères, ou aucun pour un réseau ouvert</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Se connecter</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Could not open Wi-Fi control socket: %1</source>
        <translation>Impossible d’ouvrir le socket de contrôle Wi-Fi&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not bind temporary Wi-Fi control socket: %1</source>
        <translation>Impossible d’associer le socket de contrôle Wi-Fi temporaire&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not protect temporary Wi-Fi control socket: %1</source>
        <translation>Impossible de protéger le socket de contrôle Wi-Fi temporaire&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not connect to wpa_supplicant: %1</source>
        <translation>Connexion à wpa_supplicant impossible&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not send Wi-Fi command: %1</source>
        <translation>Impossible d’envoyer la commande Wi-Fi&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not read Wi-Fi response: %1</source>
        <translation>Impossible de lire la réponse Wi-Fi&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not start Wi-Fi scan: %1</source>
        <translation>Impossible de lancer la recherche de réseaux&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not select saved Wi-Fi network: %1</source>
        <translation>Impossible de sélectionner le réseau enregistré&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not set Wi-Fi network name: %1</source>
        <translation>Impossible de définir le nom du réseau&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not set open-network security: %1</source>
        <translation>Impossible de définir le réseau comme ouvert&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not set WPA security: %1</source>
        <translation>Impossible de configurer la sécurité WPA&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not set WPA password: %1</source>
        <translation>Impossible de définir le mot de passe WPA&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not enable Wi-Fi network: %1</source>
        <translation>Impossible d’activer le réseau&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not select Wi-Fi network: %1</source>
        <translation>Impossible de sélectionner le réseau&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not save Wi-Fi network: %1</source>
        <translation>Impossible d’enregistrer le réseau&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not disconnect Wi-Fi: %1</source>
        <translation>Impossible de déconnecter le Wi-Fi&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not remove Wi-Fi network: %1</source>
        <translation>Impossible de supprimer le réseau&#xa0;: %1</translation>
    </message>
    <message>
        <source>Could not save removed Wi-Fi network: %1</source>
        <translation>Impossible d’enregistrer la suppression du réseau&#xa0;: %1</translation>
    </message>
    <message>
        <source>%1 is not a saved network.</source>
        <translation>%1 n’est pas un réseau enregistré.</translation>
    </message>
    <message>
        <source>Wi-Fi control socket path is too long.</source>
        <translation>Le chemin du socket de contrôle Wi-Fi est trop long.</translation>
    </message>
    <message>
        <source>Invalid wpa_supplicant control command.</source>
        <translation>Commande wpa_supplicant non valide.</translation>
    </message>
    <message>
        <source>wpa_supplicant did not create a network profile.</source>
        <translation>wpa_supplicant n’a pas créé de profil réseau.</translation>
    </message>
    <message>
        <source>You may not control Wi-Fi. Your user must be in the group netdev.</source>
        <translation>Vous n’êtes pas autorisé à gérer le Wi-Fi. Votre utilisateur doit appartenir au groupe netdev.</translation>
    </message>
    <message>
        <source>The Wi-Fi service is not running.</source>
        <translation>Le service Wi-Fi n’est pas lancé.</translation>
    </message>
    <message>
        <source>The Wi-Fi service does not answer.</source>
        <translation>Le service Wi-Fi ne répond pas.</translation>
    </message>
</context>
<context>
    <name>ListPage</name>
    <message>
        <source>%1 is out of range.</source>
        <translation>%1 est hors de portée.</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>hors de portée</translation>
    </message>
    <message>
        <source>weak signal</source>
        <translation>signal faible</translation>
    </message>
    <message>
        <source>fair signal</source>
        <translation>signal moyen</translation>
    </message>
    <message>
        <source>good signal</source>
        <translation>bon signal</translation>
    </message>
    <message>
        <source>very good signal</source>
        <translation>très bon signal</translation>
    </message>
    <message>
        <source>Wi-Fi</source>
        <translation>Wi-Fi</translation>
    </message>
    <message>
        <source>Saved</source>
        <translation>Enregistrés</translation>
    </message>
    <message>
        <source>In range</source>
        <translation>À portée</translation>
    </message>
    <message>
        <source>saved</source>
        <translation>enregistré</translation>
    </message>
    <message>
        <source>Details of %1</source>
        <translation>Détails de %1</translation>
    </message>
    <message>
        <source>Scan</source>
        <translation>Rechercher</translation>
    </message>
    <message>
        <source>Hidden network</source>
        <translation>Réseau masqué</translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Wi-Fi</source>
        <translation>Wi-Fi</translation>
    </message>
    <message>
        <source>New password</source>
        <translation>Nouveau mot de passe</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>Réessayer</translation>
    </message>
</context>
<context>
    <name>NetworkPage</name>
    <message>
        <source>Name</source>
        <translation>Nom</translation>
    </message>
    <message>
        <source>Security</source>
        <translation>Sécurité</translation>
    </message>
    <message>
        <source>WPA, with a password</source>
        <translation>mot de passe WPA</translation>
    </message>
    <message>
        <source>Signal</source>
        <translation>Signal</translation>
    </message>
    <message>
        <source>%1 dBm</source>
        <translation>%1&#xa0;dBm</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>hors de portée</translation>
    </message>
    <message>
        <source>Channel</source>
        <translation>Canal</translation>
    </message>
    <message>
        <source>%1 (%2 GHz)</source>
        <translation>%1 (%2&#xa0;GHz)</translation>
    </message>
    <message>
        <source>Access point</source>
        <translation>Point d’accès</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse IP</translation>
    </message>
    <message>
        <source>This kind of network has to be set up in a file; see the set-up guide.</source>
        <translation>Ce type de réseau doit être configuré dans un fichier&#xa0;; voir le guide de configuration.</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>Se déconnecter</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Se connecter</translation>
    </message>
    <message>
        <source>Forget</source>
        <translation>Oublier</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Retour</translation>
    </message>
    <message>
        <source>Forget %1? Its password is deleted.</source>
        <translation>Oublier %1&#xa0;? Son mot de passe sera supprimé.</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Conserver</translation>
    </message>
    <message>
        <source>open</source>
        <translation>réseau ouvert</translation>
    </message>
</context>
<context>
    <name>Networks</name>
    <message>
        <source>enterprise</source>
        <translation>entreprise</translation>
    </message>
    <message>
        <source>with password</source>
        <translation>avec mot de passe</translation>
    </message>
    <message>
        <source>open</source>
        <translation>ouvert</translation>
    </message>
    <message>
        <source>other security</source>
        <translation>autre sécurité</translation>
    </message>
</context>
<context>
    <name>Wifi</name>
    <message>
        <source>Connected - %1</source>
        <translation>Connecté - %1</translation>
    </message>
    <message>
        <source>Connected, but no address. Is a DHCP client running?</source>
        <translation>Connecté, mais sans adresse. Un client DHCP est-il lancé&#xa0;?</translation>
    </message>
    <message>
        <source>Connected, waiting for an address</source>
        <translation>Connecté, en attente d’une adresse</translation>
    </message>
    <message>
        <source>Wi-Fi is switched off.</source>
        <translation>Le Wi-Fi est désactivé.</translation>
    </message>
    <message>
        <source>Connecting to %1</source>
        <translation>Connexion à %1</translation>
    </message>
    <message>
        <source>Not connected</source>
        <translation>Non connecté</translation>
    </message>
    <message>
        <source>Looking for networks</source>
        <translation>Recherche de réseaux</translation>
    </message>
    <message>
        <source>Could not connect to %1.</source>
        <translation>Connexion à %1 impossible.</translation>
    </message>
    <message>
        <source>Could not connect. Check the password.</source>
        <translation>Connexion impossible. Vérifiez le mot de passe.</translation>
    </message>
    <message>
        <source>Could not connect. Check the name and the password.</source>
        <translation>Connexion impossible. Vérifiez le nom et le mot de passe.</translation>
    </message>
    <message>
        <source>Could not connect to %1. It may be out of range, or its password has changed.</source>
        <translation>Connexion à %1 impossible. Le réseau est peut-être hors de portée, ou son mot de passe a changé.</translation>
    </message>
    <message>
        <source>Forgetting %1</source>
        <translation>Suppression de %1</translation>
    </message>
    <message>
        <source>Disconnecting</source>
        <translation>Déconnexion</translation>
    </message>
</context>
</TS>
