<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>JoinPage</name>
    <message>
        <source>Hidden network</source>
        <translation>Verstecktes Netzwerk</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Hide</source>
        <translation>Verbergen</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>8 to 63 characters</source>
        <translation>8 bis 63 Zeichen</translation>
    </message>
    <message>
        <source>8 to 63 characters, or none for an open network</source>
        <translation>8 bis 63 Zeichen oder keine bei einem offenen Netzwerk</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Verbinden</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Could not open Wi-Fi control socket: %1</source>
        <translation>WLAN-Steuersocket lässt sich nicht öffnen: %1</translation>
    </message>
    <message>
        <source>Could not bind temporary Wi-Fi control socket: %1</source>
        <translation>Temporärer WLAN-Steuersocket lässt sich nicht binden: %1</translation>
    </message>
    <message>
        <source>Could not protect temporary Wi-Fi control socket: %1</source>
        <translation>Temporärer WLAN-Steuersocket lässt sich nicht schützen: %1</translation>
    </message>
    <message>
        <source>Could not connect to wpa_supplicant: %1</source>
        <translation>Verbindung mit wpa_supplicant fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>Could not send Wi-Fi command: %1</source>
        <translation>WLAN-Befehl lässt sich nicht senden: %1</translation>
    </message>
    <message>
        <source>Could not read Wi-Fi response: %1</source>
        <translation>WLAN-Antwort lässt sich nicht lesen: %1</translation>
    </message>
    <message>
        <source>Could not start Wi-Fi scan: %1</source>
        <translation>Netzwerksuche lässt sich nicht starten: %1</translation>
    </message>
    <message>
        <source>Could not select saved Wi-Fi network: %1</source>
        <translation>Gespeichertes Netzwerk lässt sich nicht auswählen: %1</translation>
    </message>
    <message>
        <source>Could not set Wi-Fi network name: %1</source>
        <translation>Netzwerkname lässt sich nicht setzen: %1</translation>
    </message>
    <message>
        <source>Could not set open-network security: %1</source>
        <translation>Netzwerk lässt sich nicht als offen einrichten: %1</translation>
    </message>
    <message>
        <source>Could not set WPA security: %1</source>
        <translation>WPA lässt sich nicht einrichten: %1</translation>
    </message>
    <message>
        <source>Could not set WPA password: %1</source>
        <translation>WPA-Passwort lässt sich nicht setzen: %1</translation>
    </message>
    <message>
        <source>Could not enable Wi-Fi network: %1</source>
        <translation>Netzwerk lässt sich nicht aktivieren: %1</translation>
    </message>
    <message>
        <source>Could not select Wi-Fi network: %1</source>
        <translation>Netzwerk lässt sich nicht auswählen: %1</translation>
    </message>
    <message>
        <source>Could not save Wi-Fi network: %1</source>
        <translation>Netzwerk lässt sich nicht speichern: %1</translation>
    </message>
    <message>
        <source>Could not disconnect Wi-Fi: %1</source>
        <translation>WLAN lässt sich nicht trennen: %1</translation>
    </message>
    <message>
        <source>Could not remove Wi-Fi network: %1</source>
        <translation>Netzwerk lässt sich nicht entfernen: %1</translation>
    </message>
    <message>
        <source>Could not save removed Wi-Fi network: %1</source>
        <translation>Entfernung des Netzwerks lässt sich nicht speichern: %1</translation>
    </message>
    <message>
        <source>%1 is not a saved network.</source>
        <translation>%1 ist kein gespeichertes Netzwerk.</translation>
    </message>
    <message>
        <source>Wi-Fi control socket path is too long.</source>
        <translation>Der Pfad des WLAN-Steuersockets ist zu lang.</translation>
    </message>
    <message>
        <source>Invalid wpa_supplicant control command.</source>
        <translation>Ungültiger Befehl an wpa_supplicant.</translation>
    </message>
    <message>
        <source>wpa_supplicant did not create a network profile.</source>
        <translation>wpa_supplicant hat kein Netzwerkprofil angelegt.</translation>
    </message>
    <message>
        <source>You may not control Wi-Fi. Your user must be in the group netdev.</source>
        <translation>Sie dürfen das WLAN nicht steuern. Ihr Benutzer muss in der Gruppe netdev sein.</translation>
    </message>
    <message>
        <source>The Wi-Fi service is not running.</source>
        <translation>Der WLAN-Dienst läuft nicht.</translation>
    </message>
    <message>
        <source>The Wi-Fi service does not answer.</source>
        <translation>Der WLAN-Dienst antwortet nicht.</translation>
    </message>
</context>
<context>
    <name>ListPage</name>
    <message>
        <source>%1 is out of range.</source>
        <translation>%1 ist außer Reichweite.</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>außer Reichweite</translation>
    </message>
    <message>
        <source>weak signal</source>
        <translation>schwaches Signal</translation>
    </message>
    <message>
        <source>fair signal</source>
        <translation>mittleres Signal</translation>
    </message>
    <message>
        <source>good signal</source>
        <translation>gutes Signal</translation>
    </message>
    <message>
        <source>very good signal</source>
        <translation>sehr gutes Signal</translation>
    </message>
    <message>
        <source>Wi-Fi</source>
        <translation>WLAN</translation>
    </message>
    <message>
        <source>Saved</source>
        <translation>Gespeichert</translation>
    </message>
    <message>
        <source>In range</source>
        <translation>In Reichweite</translation>
    </message>
    <message>
        <source>saved</source>
        <translation>gespeichert</translation>
    </message>
    <message>
        <source>Details of %1</source>
        <translation>Details zu %1</translation>
    </message>
    <message>
        <source>Scan</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Hidden network</source>
        <translation>Anderes Netz</translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Wi-Fi</source>
        <translation>WLAN</translation>
    </message>
    <message>
        <source>New password</source>
        <translation>Neues Passwort</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>Erneut versuchen</translation>
    </message>
</context>
<context>
    <name>NetworkPage</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Security</source>
        <translation>Sicherheit</translation>
    </message>
    <message>
        <source>WPA, with a password</source>
        <translation>WPA, mit Passwort</translation>
    </message>
    <message>
        <source>Signal</source>
        <translation>Signal</translation>
    </message>
    <message>
        <source>%1 dBm</source>
        <translation>%1 dBm</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>außer Reichweite</translation>
    </message>
    <message>
        <source>Channel</source>
        <translation>Kanal</translation>
    </message>
    <message>
        <source>%1 (%2 GHz)</source>
        <translation>%1 (%2 GHz)</translation>
    </message>
    <message>
        <source>Access point</source>
        <translation>BSSID</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>IP-Adresse</translation>
    </message>
    <message>
        <source>This kind of network has to be set up in a file; see the set-up guide.</source>
        <translation>Diese Art von Netzwerk muss in einer Datei eingerichtet werden, siehe Einrichtungsanleitung.</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>Trennen</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Verbinden</translation>
    </message>
    <message>
        <source>Forget</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Forget %1? Its password is deleted.</source>
        <translation>%1 entfernen? Das Passwort wird gelöscht.</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Behalten</translation>
    </message>
    <message>
        <source>open</source>
        <translation>offen</translation>
    </message>
</context>
<context>
    <name>Networks</name>
    <message>
        <source>enterprise</source>
        <translation>Enterprise</translation>
    </message>
    <message>
        <source>with password</source>
        <translation>mit Passwort</translation>
    </message>
    <message>
        <source>open</source>
        <translation>offen</translation>
    </message>
    <message>
        <source>other security</source>
        <translation>andere Sicherheit</translation>
    </message>
</context>
<context>
    <name>Wifi</name>
    <message>
        <source>Connected - %1</source>
        <translation>Verbunden - %1</translation>
    </message>
    <message>
        <source>Connected, but no address. Is a DHCP client running?</source>
        <translation>Verbunden, aber ohne Adresse. Läuft ein DHCP-Client?</translation>
    </message>
    <message>
        <source>Connected, waiting for an address</source>
        <translation>Verbunden, Adresse wird bezogen</translation>
    </message>
    <message>
        <source>Wi-Fi is switched off.</source>
        <translation>Das WLAN ist ausgeschaltet.</translation>
    </message>
    <message>
        <source>Connecting to %1</source>
        <translation>Verbinden mit %1</translation>
    </message>
    <message>
        <source>Not connected</source>
        <translation>Nicht verbunden</translation>
    </message>
    <message>
        <source>Looking for networks</source>
        <translation>Netzwerke werden gesucht</translation>
    </message>
    <message>
        <source>Could not connect to %1.</source>
        <translation>Verbindung mit %1 fehlgeschlagen.</translation>
    </message>
    <message>
        <source>Could not connect. Check the password.</source>
        <translation>Verbindung fehlgeschlagen. Bitte Passwort prüfen.</translation>
    </message>
    <message>
        <source>Could not connect. Check the name and the password.</source>
        <translation>Verbindung fehlgeschlagen. Bitte Name und Passwort prüfen.</translation>
    </message>
    <message>
        <source>Could not connect to %1. It may be out of range, or its password has changed.</source>
        <translation>Verbindung mit %1 fehlgeschlagen. Das Netzwerk ist vielleicht außer Reichweite, oder sein Passwort wurde geändert.</translation>
    </message>
    <message>
        <source>Forgetting %1</source>
        <translation>%1 wird entfernt</translation>
    </message>
    <message>
        <source>Disconnecting</source>
        <translation>Verbindung wird getrennt</translation>
    </message>
</context>
</TS>
